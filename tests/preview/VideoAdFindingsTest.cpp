// What is found in documents of video ads, each time from one that has no fault, by one change; and in what comes of them, from
// stories that were written down.
#include <gtest/gtest.h>

#include <set>
#include <sstream>

#include "preview/Findings.h"
#include "preview/vast/DocumentReading.h"

namespace velto::preview {
namespace {

using Ids = std::set<std::string>;

constexpr char inLine[] = R"(<?xml version="1.0" encoding="UTF-8"?>
<VAST version="4.2">
  <Ad id="shoes">
    <InLine>
      <AdSystem version="1">House</AdSystem>
      <AdTitle>Shoes</AdTitle>
      <AdServingId>a532d16d-4d7f-4440-bd29-2ec0e693fc80</AdServingId>
      <Impression id="1"><![CDATA[https://t.example/impression?a=1&b=[CACHEBUSTING]]]></Impression>
      <Impression>https://other.example/impression</Impression>
      <Error>https://t.example/error?code=[ERRORCODE]</Error>
      <AdVerifications>
        <Verification vendor="measure.example">
          <JavaScriptResource apiFramework="omid" browserOptional="true">https://m.example/v.js</JavaScriptResource>
          <TrackingEvents><Tracking event="verificationNotExecuted">https://m.example/not?[REASON]</Tracking></TrackingEvents>
        </Verification>
      </AdVerifications>
      <Creatives>
        <Creative id="1" sequence="1">
          <UniversalAdId idRegistry="ad-id.example">8465</UniversalAdId>
          <Linear skipoffset="00:00:05">
            <Duration>00:00:16.500</Duration>
            <TrackingEvents>
              <Tracking event="start">https://t.example/start</Tracking>
              <Tracking event="firstQuartile">https://t.example/quarter</Tracking>
              <Tracking event="progress" offset="00:00:10">https://t.example/ten</Tracking>
              <Tracking event="progress" offset="90%">https://t.example/ten</Tracking>
              <Tracking event="complete">https://t.example/start</Tracking>
            </TrackingEvents>
            <VideoClicks>
              <ClickThrough>http://shop.example/</ClickThrough>
              <ClickTracking>https://t.example/click</ClickTracking>
            </VideoClicks>
            <MediaFiles>
              <Mezzanine delivery="progressive" type="video/mp4" width="1920" height="1080">https://c.example/m.mp4</Mezzanine>
              <MediaFile delivery="progressive" type="video/mp4" codec="avc1.4d401f" width="1280" height="720" bitrate="2000">https://c.example/a.mp4</MediaFile>
              <MediaFile delivery="progressive" type="video/webm" codec="vp8" width="640" height="360">https://c.example/a.webm</MediaFile>
            </MediaFiles>
            <Icons>
              <Icon program="choices" width="20" height="20" xPosition="right" yPosition="340" duration="00:00:10">
                <StaticResource creativeType="image/png">https://c.example/i.png</StaticResource>
              </Icon>
            </Icons>
          </Linear>
        </Creative>
        <Creative>
          <CompanionAds>
            <Companion id="c" width="300" height="250">
              <StaticResource creativeType="image/png">https://c.example/c.png</StaticResource>
              <TrackingEvents><Tracking event="creativeView">https://t.example/companion</Tracking></TrackingEvents>
            </Companion>
          </CompanionAds>
          <CreativeExtensions><CreativeExtension><Tracking event="house">none</Tracking></CreativeExtension></CreativeExtensions>
        </Creative>
      </Creatives>
      <Extensions><Extension type="house"><error>none</error><Tag>[HOUSE]</Tag></Extension></Extensions>
    </InLine>
  </Ad>
</VAST>
)";

constexpr char wrapper[] = R"(<VAST version="4.2"><Ad><Wrapper><AdSystem>House</AdSystem>
<VASTAdTagURI>https://ads.example/inner?[CACHEBUSTING]</VASTAdTagURI>
<Impression>about:blank</Impression><Error>https://t.example/error</Error><Creatives><Creative><Linear><VideoClicks>
<ClickTracking>https://t.example/click</ClickTracking></VideoClicks></Linear></Creative></Creatives></Wrapper></Ad></VAST>)";

bool isPlayed(const std::string& type, const std::string&) {
  return type == "video/webm" || type == "video/ogg";
}

std::string replaced(std::string text, const std::string& from, const std::string& to) {
  const auto at = text.find(from);
  EXPECT_NE(at, std::string::npos) << from;
  return at == std::string::npos ? text : text.replace(at, from.size(), to);
}

Ids foundIn(const Story& story) {
  Ids ids;
  for (const auto& finding : judge(story, {})) ids.insert(finding.rule->id);
  return ids;
}

// As VideoAdWatch tells of it.
Story storyOf(const DocumentReading& reading) {
  Story story;
  story.add({{"event", "document"}, {"url", "ad.xml"}});
  for (const auto& fault : reading.faults)
    story.add({{"event", "fault"},
               {"id", fault.id},
               {"text", fault.text},
               {"line", fault.line},
               {"document", "ad.xml"}});
  return story;
}

Ids idsOf(const std::string& text, const std::vector<std::string>& tags = {}) {
  return foundIn(storyOf(readDocument(text, {tags, isPlayed})));
}

struct Change {
  Ids ids;
  std::string text;
};

std::string changed(const std::string& from, const std::string& to) {
  return replaced(inLine, from, to);
}

// What stands from the first to the last of both.
std::string part(const std::string& first, const std::string& last) {
  const std::string whole = inLine;
  const auto from = whole.find(first);
  return whole.substr(from, whole.find(last, from) - from);
}

const std::vector<Change>& changes() {
  static const auto master = part("<Mezzanine", "<MediaFile "),
                    mediaFiles = part("<MediaFile ", "</MediaFiles>");
  static const std::vector<Change> all{
      {{"vast-not-xml"}, changed("</Extensions>", "")},
      {{"vast-not-xml"}, changed("<VAST", "<!DOCTYPE a [<!ENTITY b \"c\">]><VAST")},
      {{"vast-not-vast"},
       changed("<VAST version=\"4.2\">\n  <Ad id=\"shoes\">", "<html><VAST><Ad>") + "</html>"},
      {{}, changed("<VAST", "\n\n<VAST")},
      {{"vast-version"}, changed("version=\"4.2\"", "version=\"1.0\"")},
      {{"vast-version-missing"}, changed("version=\"4.2\"", "version=\"next\"")},
      {{}, changed("version=\"4.2\"", "version=\" 4.1\"")},
      {{"vast-missing-node"}, changed("<Duration>00:00:16.500</Duration>", "<Duration> </Duration>")},
      {{"vast-missing-node"}, changed(master + mediaFiles, "")},
      {{"vast-missing-node"}, replaced(changed("InLine>", "Inside>"), "</InLine>", "</Inside>")},
      {{"vast-missing-detail"}, changed("<AdTitle>Shoes</AdTitle>", "")},
      {{"vast-missing-detail"},
       changed("<UniversalAdId idRegistry=\"ad-id.example\">8465</UniversalAdId>", "")},
      {{"vast-missing-detail"},
       changed("<AdServingId>a532d16d-4d7f-4440-bd29-2ec0e693fc80</AdServingId>", "")},
      {{"vast-time"}, changed("00:00:16.500", "17")},
      {{"vast-time"}, changed("skipoffset=\"00:00:05\"", "skipoffset=\"5 seconds\"")},
      {{}, changed("skipoffset=\"00:00:05\"", "skipoffset=\"33.3%\"")},
      {{"vast-offset-after-end"}, changed("offset=\"00:00:10\"", "offset=\"00:00:17\"")},
      {{"vast-offset-after-end"}, changed("skipoffset=\"00:00:05\"", "skipoffset=\"00:01:00\"")},
      {{}, changed("skipoffset=\"00:00:05\"", "skipoffset=\"00:00:16.500\"")},
      {{"vast-unknown-event"}, changed("\"firstQuartile\"", "\"firstQuarter\"")},
      {{"vast-unknown-event"}, changed(" offset=\"00:00:10\"", "")},
      {{}, changed("\"firstQuartile\"", "\"firstquartile\"")},
      {{"vast-duplicate"},
       changed("https://other.example/impression", "https://t.example/impression?a=1&amp;b=[CACHEBUSTING]")},
      {{"vast-duplicate"}, changed("event=\"complete\"", "event=\"start\"")},
      {{"vast-no-error-address"},
       changed("<Error>https://t.example/error?code=[ERRORCODE]</Error>", "<Error/>")},
      {{"vast-click-nowhere"}, changed("<ClickThrough>http://shop.example/</ClickThrough>", "")},
      {{"vast-http"}, changed("https://other.example/impression", "http://other.example/impression")},
      {{"vast-http"}, changed("https://m.example/v.js", "HTTP://m.example/v.js")},
      {{}, changed("https://other.example/impression", "http://127.0.0.1:8080/impression")},
      {{"vast-bad-address"}, changed("https://t.example/quarter", "t.example/quarter")},
      {{"vast-bad-address"}, changed("https://t.example/quarter", "https:///quarter")},
      {{"vast-bad-address"}, changed("https://t.example/quarter", "https://t.example/the quarter")},
      {{}, changed("https://t.example/quarter", "//t.example/quarter")},
      {{}, changed("http://shop.example/", "tel:+49301234")},
      {{"vast-unknown-macro"}, changed("https://t.example/quarter", "https://t.example/[CACHEBUSTER]")},
      {{"vast-unknown-macro"}, changed("https://t.example/quarter", "https://t.example/%%CACHEBUSTER%%")},
      {{"vast-unknown-macro"}, changed("https://t.example/quarter", "https://t.example/${AUCTION_PRICE}")},
      {{}, changed("https://t.example/quarter", "https://t.example/%5BADPLAYHEAD%5D?a[0]=100%25&amp;b={c}")},
      {{}, changed("https://t.example/quarter", "https://[2001:db8::1]/quarter")},
      {{"vast-no-playable-file"}, changed("type=\"video/webm\"", "type=\"video/x-flv\"")},
      {{"vast-no-playable-file", "vast-program"},
       changed(
           master + mediaFiles,
           "<InteractiveCreativeFile apiFramework=\"SIMID\">https://c.example/p</InteractiveCreativeFile>")},
      {{"vast-mezzanine-only"}, changed(mediaFiles, "")},
      {{"vast-uncommon-files"},
       replaced(changed("type=\"video/webm\"", "type=\"video/ogg\""), "avc1.4d401f", "hvc1")},
      {{"vast-media-attributes"}, changed(" width=\"640\"", "")},
      {{"vast-program-beside"}, changed("codec=\"avc1.4d401f\"", "apiFramework=\"VPAID\"")},
      {{"vast-non-linear"},
       changed("<CompanionAds>",
               "<NonLinearAds><NonLinear width=\"1\" height=\"1\"/></NonLinearAds><CompanionAds>")},
      {{"vast-companion"},
       changed("<StaticResource creativeType=\"image/png\">https://c.example/c.png</StaticResource>", "")},
      {{"vast-companion"}, changed("width=\"300\"", "width=\"1921\"")},
      {{"vast-companion"}, changed(" height=\"250\"", "")},
      {{"vast-icon"}, changed("<Icon program=\"choices\" width=\"20\"", "<Icon width=\"101\"")},
      {{"vast-icon"}, changed("xPosition=\"right\"", "xPosition=\"1261\"")},
      {{}, changed("xPosition=\"right\"", "xPosition=\"1260\"")},
      {{"vast-verification"}, changed(" vendor=\"measure.example\"", "")},
      {{"vast-verification"}, changed("apiFramework=\"omid\"", "apiFramework=\"other\"")},
      {{"vast-too-large"}, changed("[HOUSE]", std::string(100 * 1024, 'x'))},
      {{"vast-ampersand"}, changed("https://t.example/quarter", "https://t.example/?a=1&b=2")},
      {{"vast-ampersand"}, changed("https://t.example/quarter", "https://t.example/?a=1&nbsp;b=2")},
      {{}, changed("https://t.example/quarter", "https://t.example/?a=1&#38;b=2")},
      {{"vast-case"}, changed("<AdTitle>Shoes</AdTitle>", "<ADTITLE>Shoes</ADTITLE>")},
  };
  return all;
}

TEST(VideoAdFindings, AreOneForEachChange) {
  ASSERT_EQ(idsOf(inLine), Ids());
  ASSERT_EQ(idsOf(wrapper), Ids());
  for (const auto& [ids, text] : changes()) EXPECT_EQ(idsOf(text), ids) << text.substr(0, 4000);
}

TEST(VideoAdFindings, OfWrappersLookAround) {
  const std::string own = "https://ads.example/inner?[CACHEBUSTING]";
  EXPECT_EQ(idsOf(wrapper, {"https://a", "https://b"}), Ids());
  EXPECT_EQ(idsOf(wrapper, {"https://a", "https://b", "https://c"}), Ids{"vast-many-wrappers"});
  EXPECT_EQ(idsOf(wrapper, {"https://a", "https://b", "https://c", "https://d"}), Ids());
  EXPECT_EQ(idsOf(wrapper, {"1", "2", "3", "4", "5"}), Ids{"vast-wrapper-loop"});
  EXPECT_EQ(idsOf(wrapper, {"https://a", own}), Ids{"vast-wrapper-loop"});
  EXPECT_EQ(idsOf(replaced(wrapper, own, " ")), Ids{"vast-missing-node"});
  EXPECT_EQ(idsOf(replaced(wrapper, own, "inner.xml")), Ids{"vast-bad-address"});
  EXPECT_EQ(idsOf("<VAST version=\"4.2\"/>"), Ids{"vast-no-ad"});
  EXPECT_EQ(idsOf("<VideoAdServingTemplate/>"), Ids{"vast-version"});
}

TEST(VideoAdFindings, NameTheirPlace) {
  const auto reading = readDocument("\n" + replaced(inLine, "</Extensions>", ""), {});
  ASSERT_EQ(reading.faults.size(), 1U);
  EXPECT_EQ(reading.faults[0].line, 57);  // what ends there is not what should
  EXPECT_NE(reading.faults[0].text.find("Extensions"), std::string::npos) << reading.faults[0].text;
  const auto moved = readDocument("\n" + std::string(inLine).substr(39) + "\n", {});
  ASSERT_FALSE(moved.addresses.empty());
  EXPECT_EQ(moved.addresses[0].name, "impression");
  EXPECT_EQ(moved.addresses[0].line, 8);
}

std::string repeated(const std::string& text, size_t times) {
  std::string all;
  for (; times > 0; --times) all += text;
  return all;
}

// Whatever is written, somebody reads it to the end.
TEST(VideoAdFindings, AreMadeOfAnyText) {
  const std::string whole = inLine;
  for (size_t length = 0; length < whole.size(); length += 7) readDocument(whole.substr(0, length), {});
  for (const auto& text :
       {std::string("<VAST version='4.2'><Ad><InLine>\xff\xfe<AdTitle>\0", 44), std::string("&<!"),
        std::string("<VAST><Ad/>") + std::string(1000, '&') + "</VAST>", std::string("<![CDATA["),
        std::string("</extension><"), std::string(6 << 20, '<'), repeated("<extension", 500'000),
        repeated("<extension", 190'000) + std::string(3 << 20, ' ') + ">",
        "<VAST " + repeated("a='1' ", 800'000) + ">"})
    EXPECT_NE(idsOf(text), Ids()) << text.substr(0, 40);
}

struct StoryPair {
  const char* id;
  std::string broken, close;
};

const std::vector<StoryPair>& storyPairs() {
  static const std::string file =
      R"({"event":"file","url":"a","type":"video/mp4","width":640,"height":360,"bitrate":1000,)"
      R"("seconds":10,"bytes":1250000,"line":3})"
      "\n";
  const auto look = [](const std::string& members) {
    return file + R"({"event":"file-look","url":"a",)" + members + "}";
  };
  static const std::string windowsFile = R"({"event":"file","url":"a","type":"video/x-ms-wmv","line":3})"
                                         "\n"
                                         R"({"event":"file-look","url":"a","type":)";
  static const std::vector<StoryPair> all{
      {"vast-file-differs", windowsFile + R"("video/x-msvideo"})", windowsFile + R"("video/x-ms-asf"})"},
      {"vast-not-played", R"({"event":"callback","name":"DidFail","code":403,"description":"none"})",
       R"({"event":"callback","name":"DidComplete"})"},
      {"vast-wrapper-failed", R"({"event":"wrapper","url":"https://a","status":404})",
       R"({"event":"wrapper","url":"https://a","status":204})"},
      {"vast-wrapper-failed", R"({"event":"wrapper","url":"https://a","error":"not finished"})",
       R"({"event":"wrapper","url":"https://a","status":200,"duration":4000})"},
      {"vast-slow", R"({"event":"document","url":"https://a","duration":1001})",
       R"({"event":"document","url":"https://a","duration":1000})"},
      {"vast-not-told", R"({"event":"told","name":"start","url":"https://a","status":404})",
       R"({"event":"told","name":"start","url":"https://a","status":302})"},
      {"vast-not-told", R"({"event":"told","url":"https://a","error":"no name"})",
       "{\"event\":\"told\",\"url\":\"https://a\",\"error\":\"no "
       "name\"}\n{\"event\":\"told\",\"url\":\"https://a\",\"status\":200}"},
      {"vast-part-failed",
       "{\"event\":\"part\",\"url\":\"https://a\",\"line\":1}\n{\"event\":\"resource\",\"url\":\"https://"
       "a\",\"status\":404}",
       "{\"event\":\"part\",\"url\":\"https://a\",\"line\":1}\n{\"event\":\"resource\",\"url\":\"https://"
       "b\",\"status\":404}"},
      {"vast-file-failed", look(R"("error":"it cannot be read")"), look(R"("type":"application/x-3gp")")},
      {"vast-file-differs", look(R"("type":"video/webm")"), look(R"("type":"video/quicktime")")},
      {"vast-file-differs", look(R"("width":673)"), look(R"("width":672,"height":378)")},
      {"vast-file-differs", look(R"("seconds":11.1,"bytes":1250000)"),
       look(R"("seconds":11,"bytes":1250000)")},
      {"vast-file-differs", look(R"("seconds":10,"bytes":1380000)"), look(R"("seconds":10,"bytes":1370000)")},
  };
  return all;
}

Story storyOf(const std::string& lines) {
  Story made;
  made.add({{"event", "document"}, {"url", "ad.xml"}});
  std::istringstream in(lines);
  for (std::string line; std::getline(in, line);) {
    const auto entry = readJSON(line);
    EXPECT_TRUE(entry && entry->object()) << line;
    if (entry && entry->object()) made.add(*entry->object());
  }
  return made;
}

TEST(VideoAdFindings, AreWhatABrokenStoryTellsAndACloseOneDoesNot) {
  for (const auto& [id, broken, close] : storyPairs()) {
    EXPECT_EQ(foundIn(storyOf(broken)), Ids{id}) << broken;
    EXPECT_EQ(foundIn(storyOf(close)), Ids()) << close;
  }
}

TEST(VideoAdFindings, HaveEachAnExample) {
  Ids shown{"vast-no-ad", "vast-many-wrappers", "vast-wrapper-loop"};
  for (const auto& change : changes()) shown.insert(change.ids.begin(), change.ids.end());
  for (const auto& pair : storyPairs()) shown.insert(pair.id);
  for (const auto& rules : {videoAdRules(), videoAdPlayRules()})
    for (const auto& rule : rules) EXPECT_TRUE(shown.contains(rule.id)) << rule.id;
}

}  // namespace
}  // namespace velto::preview
