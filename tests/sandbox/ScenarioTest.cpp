// Scenario texts: what they ask for, and how their mistakes are reported.
#include <gtest/gtest.h>

#include "Support.h"
#include "sandbox/RuleBook.h"
#include "sandbox/Scenario.h"

namespace velto::sandbox {
namespace {

std::string errorOf(const std::string& text) {
  try {
    readScenarioText(text, "demo.json", "");
  } catch (const Error& error) {
    return error.what();
  }
  return "no error";
}

// The rules that answer to a row of equal requests.
std::string rulesFor(RuleBook& rules, const RequestFacts& facts, int requests) {
  std::string names;
  for (int i = 0; i < requests; ++i) {
    const auto chosen = rules.choose(facts);
    names += chosen ? chosen->rule + chosen->answer.body + " " : "- ";
  }
  return names;
}

TEST(Scenario, ChoosesRulesByConditionsAndCounts) {
  RuleBook rules;
  for (Rule& rule : readScenarioText(R"({"rules": [
      {"name": "first", "when": {"kind": "ad", "request": "first"}, "answer": 204},
      {"name": "third", "when": {"kind": "ad", "request": 3}, "answer": 204},
      {"name": "even", "when": {"kind": "ad", "type": "banner", "request": {"every": 2}}, "answer": 204},
      {"name": "late", "when": {"kind": "ad", "request": {"from": 5}}, "answers": [{"body": "1"}, {"body": "2"}]},
      {"name": "files", "when": {"path": "/files/*", "host": "CDN.example"}, "answer": {"body": {"json": [1]}}}]})",
                                     "demo", "")) {
    rules.append(std::move(rule));
  }
  RequestFacts banner;
  banner.kind = Kind::Ad;
  banner.type = "banner";
  EXPECT_EQ(rulesFor(rules, banner, 8), "first even third even late1 even late2 even ");

  RequestFacts file;
  file.kind = Kind::Download;
  file.host = "cdn.example";
  file.path = "/files/a";
  EXPECT_EQ(rulesFor(rules, file, 1), "files[1] ");
  file.path = "/other";
  EXPECT_EQ(rulesFor(rules, file, 1), "- ");
  rules.prepend({"newest", {.kind = Kind::Download}, {}});
  EXPECT_EQ(rulesFor(rules, file, 1), "newest ");
}

TEST(Scenario, ReadsBodiesFromFilesBesideItAndTheExamplesAreGood) {
  const TemporaryFolder folder;
  folder.write("page.html", "from a file");
  const std::string path = folder.write("a.json", R"({"rules": [{"answers": [
      {"body": {"file": "page.html"}}, {"body": {"base64": "/wA="}}, {"body": ["one", "two"]}]}]})");
  std::vector<std::string> bodies;
  const auto rules = readScenarioFile(path);
  for (const auto& answer : rules.at(0).answers) bodies.push_back(answer.body);
  EXPECT_EQ(bodies, (std::vector<std::string>{"from a file", {"\xFF\0", 2}, "one\ntwo"}));
  for (const auto& entry : std::filesystem::directory_iterator(SANDBOX_EXAMPLES))
    if (entry.path().extension() == ".json") EXPECT_NO_THROW(readScenarioFile(entry.path())) << entry.path();
}

TEST(Scenario, NamesThePlaceOfAMistake) {
  const std::pair<const char*, const char*> cases[] = {
      {"{\n  \"rules\": [,]}", "demo.json: parse error at line 2, column 13"},
      {R"({"rules": [{"answer": 204}, {"anwser": 204}]})", "demo.json: rules[1]: unknown key \"anwser\""},
      {R"({"rules": [{"when": {"kind": "adx"}, "answer": 204}]})",
       "demo.json: rules[0].when.kind: unknown word"},
      {R"({"rules": [{"answer": {"headers": {"x": "a\r\nb"}}}]})",
       "demo.json: rules[0].answer.headers.x: line break"},
      {R"({"rules": [{"answer": {"body": {"file": "missing"}}}]})",
       "demo.json: rules[0].answer.body.file: missing"},
      {R"({"rules": [{"tls": "refuse", "when": {"key": "k"}}]})",
       "demo.json: rules[0].when: unknown key \"key\""},
  };
  for (const auto& [text, expected] : cases) {
    EXPECT_TRUE(errorOf(text).starts_with(expected)) << errorOf(text) << "\nexpected " << expected;
  }
  EXPECT_NE(errorOf(std::string(100'000, '[')), "no error");
}

}  // namespace
}  // namespace velto::sandbox
