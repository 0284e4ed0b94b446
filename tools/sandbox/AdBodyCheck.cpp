// Checks the JSON body of ad requests, key by key. See RequestCheck.h.
#include <regex.h>

#include <algorithm>
#include <array>

#include "sandbox/Json.h"
#include "sandbox/RequestCheck.h"

namespace velto::sandbox {

namespace {

enum class Type { String, Number, Integer, Boolean };

struct Field {
  const char* key;
  Type type;
  bool required;
};

constexpr std::array kFields = {
    Field{"sdkt", Type::String, true},
    Field{"sdkv", Type::String, true},
    Field{"mraid", Type::Number, true},
    Field{"omsdk", Type::Number, true},
    Field{"gadapt", Type::Integer, true},
    Field{"aid", Type::String, false},
    Field{"aida", Type::String, true},
    Field{"aidl", Type::String, true},
    Field{"dmn", Type::String, true},
    Field{"dmo", Type::String, true},
    Field{"dmp", Type::String, true},
    Field{"dos", Type::String, true},
    Field{"dov", Type::String, true},
    Field{"dsw", Type::Number, true},
    Field{"dsh", Type::Number, true},
    Field{"dsd", Type::Number, true},
    Field{"dua", Type::String, true},
    Field{"dln", Type::String, true},
    Field{"dct", Type::String, true},
    Field{"dctd", Type::String, false},
    Field{"soc", Type::String, false},
    Field{"noc", Type::String, false},
    Field{"son", Type::String, false},
    Field{"non", Type::String, false},
    Field{"ncc", Type::String, false},
    Field{"scc", Type::String, false},
    Field{"aln", Type::String, true},
    Field{"ab", Type::String, true},
    Field{"an", Type::String, true},
    Field{"geo", Type::String, false},
    Field{"ga", Type::Number, false},
    Field{"gf", Type::Number, false},
    Field{"gz", Type::String, true},
    Field{"mediator", Type::String, false},
    Field{"okw", Type::String, false},
    Field{"oyob", Type::Integer, false},
    Field{"oage", Type::Integer, false},
    Field{"ogender", Type::String, false},
    Field{"omarital", Type::String, false},
    Field{"gdpr_opt", Type::Boolean, true},
    Field{"gdpr_consent", Type::String, false},
    Field{"gdpr_dc", Type::Boolean, true},
    Field{"us_privacy", Type::String, false},
};

const char* wordFor(Type type) {
  switch (type) {
    case Type::String:
      return "a string";
    case Type::Number:
      return "a number";
    case Type::Integer:
      return "an integer";
    case Type::Boolean:
      return "a boolean";
  }
  return "";
}

bool has(const Json& value, Type type) {
  switch (type) {
    case Type::String:
      return value.is_string();
    case Type::Number:
      return value.is_number();
    case Type::Integer:
      return value.is_number_integer();
    case Type::Boolean:
      return value.is_boolean();
  }
  return false;
}

class BodyChecker {
 public:
  explicit BodyChecker(const Json& body) : body_(body) {}

  std::vector<std::string> run(const std::string& userAgent) {
    checkKeysAndTypes();
    checkVersionsAndIdentifiers();
    checkDevice(userAgent);
    checkLocation();
    checkSettingsAndPrivacy();
    return std::move(problems_);
  }

 private:
  // The value of a key whose type is right, so that every fault is reported once; nullptr otherwise.
  const Json* find(const char* key) const {
    const auto field = std::find_if(kFields.begin(), kFields.end(), [&](const Field& candidate) {
      return std::string(candidate.key) == key;
    });
    const auto value = body_.find(key);
    return field != kFields.end() && value != body_.end() && has(*value, field->type) ? &*value : nullptr;
  }

  void report(const std::string& key, const std::string& what) {
    problems_.push_back("body " + key + ": " + what);
  }

  void checkKeysAndTypes() {
    for (const Field& field : kFields) {
      const auto value = body_.find(field.key);
      if (value == body_.end()) {
        if (field.required) report(field.key, "missing");
      } else if (!has(*value, field.type)) {
        report(field.key, "is " + value->dump(-1, ' ', false, Json::error_handler_t::replace).substr(0, 80) +
                              ", expected " + wordFor(field.type));
      }
    }
    for (const auto& [key, value] : body_.items()) {
      const auto known = [&, &name = key](const Field& field) { return name == field.key; };
      if (std::none_of(kFields.begin(), kFields.end(), known)) report(key, "unknown key");
    }
  }

  void expectWord(const char* key, const std::vector<std::string>& words) {
    const Json* value = find(key);
    if (!value || std::find(words.begin(), words.end(), value->get<std::string>()) != words.end()) return;
    std::string list;
    for (const std::string& word : words) list += (list.empty() ? "\"" : ", \"") + word + '"';
    report(key, "is " + value->dump() + ", expected one of " + list);
  }

  // The pattern, a POSIX extended regular expression, must match the whole text.
  void expectPattern(const char* key, const std::string& pattern, const char* meaning) {
    const Json* value = find(key);
    if (!value) return;
    const std::string text = value->get<std::string>();
    regex_t expression;
    if (regcomp(&expression, ("^(" + pattern + ")$").c_str(), REG_EXTENDED | REG_NOSUB) != 0) return;
    const bool matches =
        text.find('\0') == std::string::npos && regexec(&expression, text.c_str(), 0, nullptr, 0) == 0;
    regfree(&expression);
    if (!matches) report(key, "is \"" + text.substr(0, 200) + "\", expected " + meaning);
  }

  void expectNumber(const char* key, double low, double high, const char* meaning) {
    const Json* value = find(key);
    if (!value) return;
    const double number = value->get<double>();
    if (!(number >= low && number <= high)) report(key, "is " + value->dump() + ", expected " + meaning);
  }

  // Two keys that always carry the same value, or are both absent.
  void expectSame(const char* first, const char* second) {
    const auto one = body_.find(first);
    const auto other = body_.find(second);
    const bool same = one == body_.end() ? other == body_.end() : other != body_.end() && *one == *other;
    if (!same) report(std::string(first) + ", " + second, "expected equal values, or neither");
  }

  void expectNotEmpty(const char* key) {
    const Json* value = find(key);
    if (value && value->get<std::string>().empty()) report(key, "empty");
  }

  void checkVersionsAndIdentifiers() {
    expectNotEmpty("sdkt");
    expectPattern("sdkv", R"([0-9]+(\.[0-9]+)*)", "a version such as 4.0.10");
    expectNumber("mraid", 3, 3, "3");
    expectNumber("omsdk", 1, 1, "1");
    expectNumber("gadapt", 0, 1, "0 or 1");
    expectPattern("aid", "[0-9A-Fa-f]{8}(-[0-9A-Fa-f]{4}){3}-[0-9A-Fa-f]{12}", "a UUID");
    expectPattern("aida", "[0-9a-f]{32}", "32 lower-case hexadecimal digits");
    expectWord("aidl", {"", "1"});
    const Json* limited = find("aidl");
    if (limited && *limited == "1" && body_.contains("aid"))
      report("aid", "present although tracking is limited");
  }

  void checkDevice(const std::string& userAgent) {
    const Json* agent = find("dua");
    if (agent && agent->get<std::string>() != userAgent) {
      report("dua", "is not the header user-agent, \"" + userAgent + '"');
    }
    for (const char* key : {"dsw", "dsh", "dsd"}) expectNumber(key, 0.01, 100000, "more than 0");
    expectWord("dct", {"WIFI", "CARRIER"});
    expectWord("dctd", {"WIFI", "2G", "3G", "4G"});
    expectPattern("soc", "[0-9]+", "the carrier's network code, without its country");
    expectSame("soc", "noc");
    expectSame("son", "non");
    expectSame("ncc", "scc");
  }

  void checkLocation() {
    expectPattern("geo", R"(-?[0-9]{1,2}\.[0-9]{6},-?[0-9]{1,3}\.[0-9]{6})",
                  "latitude and longitude with six decimals each");
    expectNumber("ga", 0, 1e9, "metres, not negative");
    expectNumber("gf", 0, 1e15, "milliseconds since 1970");
    const bool located = body_.contains("geo");
    if (located != body_.contains("gf")) report("geo, gf", "expected both or neither");
    if (!located && body_.contains("ga")) report("ga", "present without geo");
    // The word that the server has always parsed: sign, whole hours with two decimals, "00". UTC and all
    // offsets under one hour are -0.0000; a negative offset keeps its own minus behind the sign.
    expectPattern("gz", R"((\+([1-9]|1[0-4])|-0|--([1-9]|1[0-2]))\.0000)",
                  "a time-zone word such as +1.0000, -0.0000 or --5.0000");
  }

  void checkSettingsAndPrivacy() {
    expectNumber("oyob", 1, 1e9, "at least 1");
    expectNumber("oage", 1, 1e9, "at least 1");
    expectWord("ogender", {"male", "female", "Other"});
    expectWord("omarital", {"Single", "Living Common", "Married", "Divorced", "Widowed"});
    expectSame("gdpr_opt", "gdpr_dc");
  }

  const Json& body_;
  std::vector<std::string> problems_;
};

}  // namespace

std::vector<std::string> checkAdBody(const std::string& body, const std::string& userAgent) {
  std::vector<std::string> repeated;
  Json json;
  try {
    json = parseJson(body, &repeated);
  } catch (const Json::parse_error&) {
    return {"body: not JSON"};
  }
  if (!json.is_object()) return {"body: not a JSON object"};
  std::vector<std::string> problems = BodyChecker(json).run(userAgent);
  for (const std::string& key : repeated) problems.push_back("body " + key + ": given more than once");
  return problems;
}

}  // namespace velto::sandbox
