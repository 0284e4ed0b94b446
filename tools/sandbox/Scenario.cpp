// See Scenario.h.
#include "sandbox/Scenario.h"

#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <limits>

#include "sandbox/Json.h"
#include "sandbox/Server.h"
#include "sandbox/Text.h"

namespace velto::sandbox {

namespace {

// A value of the document together with its place, which every error names: "demo.json: rules[2].when.kind:
// ...".
class Node {
 public:
  Node(const Json& value, std::string document, std::string place)
      : value_(value), document_(std::move(document)), place_(std::move(place)) {}

  [[noreturn]] void refuse(const std::string& what) const {
    throw Error(document_ + ": " + (place_.empty() ? "" : place_ + ": ") + what);
  }

  const Json& json() const { return value_; }
  bool has(const char* key) const { return value_.contains(key); }
  Node operator[](const char* key) const {
    return {value_.at(key), document_, place_.empty() ? key : place_ + "." + key};
  }

  // Misspelt keys would silently do nothing otherwise.
  void expectObject(const std::vector<std::string>& keys) const {
    if (!value_.is_object()) refuse("expected an object");
    for (const auto& item : value_.items()) {
      if (std::find(keys.begin(), keys.end(), item.key()) == keys.end()) {
        refuse("unknown key \"" + item.key() + "\" (known: " + join(keys, ", ") + ")");
      }
    }
  }

  std::vector<Node> elements() const {
    if (!value_.is_array() || value_.empty()) refuse("expected a list with at least one element");
    std::vector<Node> nodes;
    for (std::size_t i = 0; i < value_.size(); ++i) {
      nodes.emplace_back(value_[i], document_, place_ + "[" + std::to_string(i) + "]");
    }
    return nodes;
  }

  std::string text() const {
    if (!value_.is_string()) refuse("expected a string");
    return value_.get<std::string>();
  }

  std::size_t number(std::int64_t low, std::int64_t high = std::numeric_limits<std::int32_t>::max()) const {
    if (!value_.is_number_integer() || value_ < low || value_ > high) {
      refuse("expected a whole number from " + std::to_string(low) + " to " + std::to_string(high));
    }
    return value_.get<std::size_t>();
  }

  std::chrono::milliseconds milliseconds() const { return std::chrono::milliseconds(number(0)); }

  bool boolean() const {
    if (!value_.is_boolean()) refuse("expected true or false");
    return value_.get<bool>();
  }

  template <typename Value>
  Value word(const std::vector<std::pair<std::string, Value>>& words) const {
    const std::string given = text();
    std::vector<std::string> known;
    for (const auto& [word, value] : words) {
      if (word == given) return value;
      known.push_back(word);
    }
    refuse("unknown word \"" + given + "\" (known: " + join(known, ", ") + ")");
  }

 private:
  const Json& value_;
  std::string document_;
  std::string place_;
};

Count readCount(const Node& node) {
  if (node.json().is_string()) return node.word<Count>({{"first", Count::nth(1)}});
  if (node.json().is_number()) return Count::nth(node.number(1));
  node.expectObject({"from", "every"});
  if (node.json().size() != 1) node.refuse("expected either \"from\" or \"every\"");
  return node.has("from") ? Count::starting(node["from"].number(1))
                          : Count::multiplesOf(node["every"].number(1));
}

Match readMatch(const Node& node) {
  node.expectObject({"kind", "key", "type", "size", "host", "endpoint", "path", "item", "request"});
  Match match;
  if (node.has("kind")) {
    std::vector<std::pair<std::string, Kind>> kinds;
    for (const Kind kind :
         {Kind::Ad, Kind::Mediation, Kind::Install, Kind::Click, Kind::Vast, Kind::Download, Kind::Other}) {
      kinds.emplace_back(wordFor(kind), kind);
    }
    match.kind = node["kind"].word(kinds);
  }
  const auto text = [&](const char* key) {
    return node.has(key) ? std::optional(node[key].text()) : std::nullopt;
  };
  match.key = text("key");
  match.type = text("type");
  match.size = text("size");
  match.host = text("host");
  match.endpoint = text("endpoint");
  match.path = text("path");
  match.item = text("item");
  if (match.host) match.host = lowerCase(*match.host);
  if (node.has("request")) match.count = readCount(node["request"]);
  return match;
}

Fault readFault(const Node& node) {
  node.expectObject({"cut", "contentLength", "slow"});
  Fault fault;
  if (node.has("cut")) {
    const Node cut = node["cut"];
    if (cut.json().is_string()) {
      fault.cutBeforeHeaders = cut.word<bool>({{"headers", true}});
    } else {
      fault.cutAfterBytes = cut.number(0);
    }
  }
  if (node.has("contentLength")) fault.declaredLength = node["contentLength"].number(1);
  if (node.has("slow")) {
    const Node slow = node["slow"];
    slow.expectObject({"bytes", "everyMs"});
    if (!slow.has("bytes") || !slow.has("everyMs")) slow.refuse("expected both \"bytes\" and \"everyMs\"");
    fault.chunkBytes = slow["bytes"].number(1);
    fault.interval = slow["everyMs"].milliseconds();
  }
  return fault;
}

void readHeaders(const Node& node, Answer& answer) {
  if (!node.json().is_object()) node.refuse("expected an object");
  for (const auto& item : node.json().items()) {
    const std::string name = lowerCase(item.key());
    const Node value = node[item.key().c_str()];
    const bool nameGood = !name.empty() && std::all_of(name.begin(), name.end(), [](char c) {
      return c > ' ' && c < 127 && std::string_view("\"(),/:;<=>?@[\\]{}").find(c) == std::string_view::npos;
    });
    if (!nameGood) value.refuse("not a header name");
    if (name == "content-length" || name == "transfer-encoding" || name == "connection") {
      value.refuse("the server sets this header itself (see \"fault\")");
    }
    const std::string text = value.json().is_number() ? value.json().dump() : value.text();
    if (text.find_first_of(std::string_view("\r\n\0", 3)) != std::string::npos)
      value.refuse("line break in a header");
    answer.header(item.key(), text);
  }
}

std::string readBody(const Node& node, const std::string& folder) {
  if (node.json().is_string()) return node.text();
  if (node.json().is_array()) {
    std::vector<std::string> lines;
    for (const Node& line : node.elements()) lines.push_back(line.text());
    return join(lines, "\n");
  }
  node.expectObject({"file", "base64", "json"});
  if (node.json().size() != 1) node.refuse("expected one of \"file\", \"base64\", \"json\"");
  if (node.has("json")) return node["json"].json().dump();
  if (node.has("base64")) {
    const std::optional<std::string> bytes = base64Decode(node["base64"].text());
    if (!bytes) node["base64"].refuse("not base64");
    return *bytes;
  }
  try {
    return readFile((std::filesystem::path(folder) / node["file"].text()).string());
  } catch (const Error& error) {
    node["file"].refuse(error.what());
  }
}

Answer readAnswer(const Node& node, const std::string& folder) {
  Answer answer;
  if (node.json().is_number()) {
    answer.status = static_cast<int>(node.number(200, 599));
    return answer;
  }
  node.expectObject({"status", "headers", "body", "delayMs", "expand", "fault"});
  if (node.has("status")) answer.status = static_cast<int>(node["status"].number(200, 599));
  if (node.has("headers")) readHeaders(node["headers"], answer);
  if (node.has("body")) answer.body = readBody(node["body"], folder);
  if (node.has("delayMs")) answer.delay = node["delayMs"].milliseconds();
  if (node.has("expand")) answer.expand = node["expand"].boolean();
  if (node.has("fault")) answer.fault = readFault(node["fault"]);
  return answer;
}

Rule readRule(const Node& node, const std::string& folder) {
  node.expectObject({"name", "when", "answer", "answers", "tls"});
  Rule rule;
  if (node.has("name")) rule.name = node["name"].text();
  if (node.has("when")) rule.when = readMatch(node["when"]);
  if (node.has("answer") + node.has("answers") + node.has("tls") != 1) {
    node.refuse("expected exactly one of \"answer\", \"answers\", \"tls\"");
  }
  if (node.has("answer")) rule.answers.push_back(readAnswer(node["answer"], folder));
  if (node.has("answers")) {
    for (const Node& answer : node["answers"].elements()) rule.answers.push_back(readAnswer(answer, folder));
  }
  if (node.has("tls")) {
    rule.tls = node["tls"].word<TlsFault>({{"refuse", TlsFault::Refuse},
                                           {"wrong-name", TlsFault::WrongName},
                                           {"expired", TlsFault::Expired},
                                           {"untrusted", TlsFault::Untrusted}});
    // Nothing of the request is known yet while the handshake goes on.
    if (node.has("when")) node["when"].expectObject({"host", "endpoint", "request"});
  }
  return rule;
}

}  // namespace

std::string readFile(const std::string& path) {
  std::error_code fault;
  if (!std::filesystem::is_regular_file(path, fault)) throw Error(path + ": no such file");
  std::ifstream file(path, std::ios::binary);
  std::string bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  if (!file) throw Error(path + ": cannot be read");
  return bytes;
}

std::vector<Rule> readScenarioFile(const std::string& path) {
  return readScenarioText(readFile(path), path, std::filesystem::path(path).parent_path().string());
}

std::vector<Rule> readScenarioText(const std::string& text, const std::string& name,
                                   const std::string& folder) {
  Json json;
  try {
    json = parseJson(text);
  } catch (const Json::parse_error& error) {
    // The library's text is "[json.exception...] parse error at line 3, column 5: ...".
    const std::string what = error.what();
    const std::size_t end = what.find("] ");
    throw Error(name + ": " + (end == std::string::npos ? what : what.substr(end + 2)));
  }
  const Node document(json, name, "");
  document.expectObject({"name", "rules"});
  if (!document.has("rules")) document.refuse("expected \"rules\"");
  std::vector<Rule> rules;
  for (const Node& rule : document["rules"].elements()) rules.push_back(readRule(rule, folder));
  return rules;
}

}  // namespace velto::sandbox
