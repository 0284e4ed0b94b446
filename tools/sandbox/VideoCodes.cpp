// A video ad for each code with which one can fail (VAST 4.2, 2.3.6.3), by the keys code-100, code-101, …: rules of the
// built-in scenario. The servers of each ad are told at /landing?error=CODE.
#include "sandbox/VideoCodes.h"

#include <utility>
#include <vector>

#include "sandbox/Json.h"

namespace velto::sandbox::codes {
namespace {

constexpr char error[] = "<Error>https://{{host}}/landing?error=[ERRORCODE]</Error>";

std::string file(const std::string& name, const std::string& attributes = R"(type="video/webm")") {
  return "<MediaFile delivery=\"progressive\" width=\"640\" height=\"360\" " + attributes +
         ">https://{{host}}/" + name + "</MediaFile>";
}

std::string linear(const std::string& files, const std::string& duration = "00:00:05") {
  return "<Creative><Linear><Duration>" + duration + "</Duration><MediaFiles>" + files +
         "</MediaFiles></Linear></Creative>";
}

std::string companion(const std::string& resource, const std::string& required = "none") {
  return "<Creative><CompanionAds required=\"" + required + "\"><Companion width=\"300\" height=\"60\">" +
         resource + "</Companion></CompanionAds></Creative>";
}

struct AdText {
  std::string creatives = linear(file("video.webm"));
  std::string more = {};        // in InLine
  std::string attributes = {};  // of Ad
};

std::string ad(const AdText& text) {
  return "<Ad id=\"sandbox\" " + text.attributes +
         "><InLine><AdSystem>velto-sandbox</AdSystem><AdTitle>Sandbox</AdTitle>" + error +
         "<Impression>https://{{host}}/landing?impression=1</Impression>" + text.more + "<Creatives>" +
         text.creatives + "</Creatives></InLine></Ad>";
}

std::string document(const std::string& ads) {
  return "<VAST version=\"4.2\">" + ads + "</VAST>";
}

std::string wrapper(const std::string& tag, const std::string& attributes = {},
                    const std::string& more = {}) {
  return document("<Ad id=\"wrapper\"><Wrapper " + attributes +
                  "><AdSystem>velto-sandbox</AdSystem><VASTAdTagURI>" + "https://{{host}}" + tag +
                  "</VASTAdTagURI>" + error + more + "</Wrapper></Ad>");
}

Json answer(const std::string& body) {
  return {{"headers", {{"Content-Type", "application/xml"}}}, {"expand", true}, {"body", body}};
}

class VideoRules {
 public:
  void code(int number, const std::string& body) {
    const auto text = std::to_string(number);
    add("video ad that fails with " + text, {{"kind", "vast"}, {"key", "code-" + text}}, answer(body));
  }
  // What a wrapper leads to: without it nobody would be told.
  void inside(int number, const Json& within, const std::string& attributes = {},
              const std::string& more = {}) {
    const auto path = "/vast/code-" + std::to_string(number);
    code(number, wrapper(path, attributes, more));
    download(path, within);
  }
  void download(const std::string& path, const Json& answer) {
    add(path, {{"kind", "download"}, {"path", path}}, answer);
  }
  std::string text() const { return rules_.dump(1); }

 private:
  void add(const std::string& name, const Json& when, const Json& answer) {
    rules_.push_back({{"name", name}, {"when", when}, {"answer", answer}});
  }

  Json rules_ = Json::array();
};

void addDocuments(VideoRules& rules) {
  rules.inside(100, answer("<VAST version=\"4.2\"><Ad id=\"cut\"><InLine>"));
  rules.inside(101, answer("<html><body>No document</body></html>"));
  rules.inside(102, answer("<VAST version=\"9.0\"/>"));
  rules.code(200, document(ad({companion("<HTMLResource>an ad</HTMLResource>")})));
  rules.code(201, document(ad({"<Creative><NonLinearAds/></Creative>"})));
  rules.code(202, document(ad({linear(file("video.webm"), "00:10:00")})));
  const std::string blocks = "<BlockedAdCategories authority=\"sandbox\">1</BlockedAdCategories>";
  rules.inside(204, answer(document(ad({}))), {}, blocks);
  const std::string category = "<Category authority=\"sandbox\">1</Category>";
  rules.inside(205, answer(document(ad({.more = category}))), {}, blocks);
  const auto place = [](const char* number) {
    return ad({.attributes = "sequence=\"" + std::string(number) + "\""});
  };
  rules.code(206, document(place("1") + place("2")));
  rules.inside(300, answer(wrapper("/vast/code-303")), "followAdditionalWrappers=\"false\"");
  rules.inside(301, Json(503));
  rules.inside(302, answer(wrapper("/vast/code-302")));
  rules.inside(303, answer("<VAST version=\"4.2\"/>"));
  rules.code(304, document(ad({.more = "<Expires>1</Expires>"})));
}

void addFiles(VideoRules& rules) {
  rules.code(400, document(ad({})));
  rules.code(401, document(ad({linear(file("missing.webm"))})));
  rules.code(402, document(ad({linear(file("silent.webm"))})));
  rules.download("/silent.webm", {{"delayMs", 60'000}, {"body", "late"}});
  rules.code(403,
             document(ad({linear(file("program.js", R"(type="text/javascript" apiFramework="VPAID")"))})));
  rules.code(405, document(ad({linear(file("text.webm"))})));
  rules.download("/text.webm", {{"headers", {{"Content-Type", "video/webm"}}}, {"body", "no video"}});
  rules.code(409, document(ad({linear(file("video.webm") +
                                      "<InteractiveCreativeFile type=\"text/html\" apiFramework=\"SIMID\">"
                                      "https://{{host}}/program.html</InteractiveCreativeFile>")})));
  rules.code(410,
             document(ad({.more = "<AdVerifications><Verification vendor=\"sandbox\"><JavaScriptResource "
                                  "apiFramework=\"other\">https://{{host}}/measure.js</JavaScriptResource>"
                                  "<TrackingEvents><Tracking event=\"verificationNotExecuted\">"
                                  "https://{{host}}/landing?reason=[REASON]</Tracking></TrackingEvents>"
                                  "</Verification></AdVerifications>"})));
  const std::string film = linear(file("video.webm"));
  const std::string program =
      "<StaticResource creativeType=\"application/x-program\">https://{{host}}/program</StaticResource>";
  rules.code(602, document(ad({film + companion(program, "all")})));
  rules.code(603, document(ad({film + companion("<StaticResource creativeType=\"image/png\">"
                                                "https://{{host}}/missing.png</StaticResource>")})));
  rules.code(604, document(ad({film + companion(program)})));
}

}  // namespace
}  // namespace velto::sandbox::codes

std::string velto::sandbox::videoCodeRules() {
  codes::VideoRules rules;
  codes::addDocuments(rules);
  codes::addFiles(rules);
  const auto text = rules.text();
  return text.substr(1, text.size() - 2);  // without its brackets
}
