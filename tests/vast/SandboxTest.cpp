// The documents that the sandbox server answers with are what its page of keys says, from the application's own request on.
#include "velto/platform/foundation/Text.h"
#include "velto/vast/VASTResolver.h"

#include "../support/HeadlessTest.h"
#include "sandbox/RequestCheck.h"
#include "sandbox/RuleBook.h"
#include "sandbox/Scenario.h"
#include "sandbox/Server.h"
#include "sandbox/Text.h"

namespace velto {
namespace {

class VASTSandboxTest : public test::HeadlessTest {
 protected:
  VASTSandboxTest() {
    for (auto& rule : sandbox::readScenarioText(sandbox::defaultScenario(), "built in", ""))
      rules_.append(std::move(rule));
    platform->urlSession().respond([](const auto&) { return true; },
                                   [this](const NSURLRequest& request) { return answered(request); });
  }
  headless::Answer answered(const NSURLRequest& request) {
    sandbox::RecordedRequest record;
    record.method = "GET";
    record.path = request.url.path();
    record.query = sandbox::decodeQuery("?" + request.url.query().value_or(""));
    sandbox::RequestFacts facts;
    facts.kind = sandbox::kindOf(record);
    facts.path = record.path;
    facts.key = record.queryValue("key");
    const auto chosen = rules_.choose(facts);
    if (!chosen) return {.status = 404};
    return {.status = chosen->answer.status,
            .body = replaceAll(chosen->answer.body, "{{host}}", "ads.example")};
  }
  VASTResolution resolve(const std::string& key) {
    const auto url =
        VeltoVASTURL::VASTURLforHost("ads.example", key, 1, 640, 360, "App", "https://s.example");
    VASTResolution found;
    const auto handle =
        VASTResolver::resolve(*url->URL(), {}, [&](auto resolution) { found = std::move(resolution); });
    platform->advance(std::chrono::seconds(1));
    return found;
  }

 private:
  sandbox::RuleBook rules_;
};

TEST_F(VASTSandboxTest, EachKeyHasItsDocument) {
  const std::tuple<const char*, size_t, size_t, std::optional<VASTError>> keys[] = {
      {"demo", 1, 0, {}},
      {"nofill", 0, 0, VASTError::NoAdsAfterWrapper},
      {"wrapper", 1, 0, {}},
      {"endless", 0, 0, VASTError::WrapperLimit},
      {"pod", 2, 1, {}},
      {"vpaid", 0, 0, VASTError::NoSupportedFile},
      {"broken", 0, 0, VASTError::NotXML}};
  for (const auto& [key, ads, spare, error] : keys) {
    const auto found = resolve(key);
    EXPECT_EQ(found.pod.size(), ads) << key;
    EXPECT_EQ(found.spare.size(), spare) << key;
    EXPECT_EQ(found.error, error) << key;
  }
  EXPECT_EQ(resolve("wrapper").pod.at(0).impressions.size(), 2U);
  EXPECT_EQ(platform->urlSession().requests("error=403").size(), 1U);
}

}  // namespace
}  // namespace velto
