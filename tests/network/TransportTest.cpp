// Performing requests and classifying every kind of answer.
#include "velto/network/VeltoTaskManager.h"

#include "../support/HeadlessTest.h"

namespace velto {
namespace {

using headless::Answer;

class TransportTest : public test::HeadlessTest {
 protected:
  // The response to a banner request that is answered so.
  std::shared_ptr<VeltoTaskResponse> responseTo(Answer answer) {
    std::shared_ptr<VeltoTaskResponse> result;
    bool onMain = true;
    platform->urlSession().enqueue(std::move(answer));
    VeltoTaskManager::executeTaskFor(VeltoAdTypeBanner, VeltoBannerSize320x50, std::nullopt,
                                     [&](auto response) {
                                       result = std::move(response);
                                       onMain = platform->mainQueue().isCurrent();
                                     });
    EXPECT_FALSE(result) << "a handler is never called inside the call when a request was made";
    platform->runUntilIdle();
    EXPECT_FALSE(onMain);
    return result;
  }
};

TEST_F(TransportTest, ContentOfA200) {
  const std::vector<std::pair<std::vector<HeaderFields::Field>, VeltoTaskResponseType>> table{
      {{{"x-content", "html"}}, VeltoTaskResponseMarkup},
      {{{"X-Content", "mediation"}, {"content-type", "text/html"}}, VeltoTaskResponseMediation},
      {{{"x-content", "no_fill"}}, VeltoTaskResponseNoFill},
      {{{"x-content", "vast"}}, VeltoTaskResponseNoFill},
      {{{"x-content", "HTML"}}, VeltoTaskResponseUnknown},
      {{{"x-content", ""}, {"Content-Type", "text/html"}}, VeltoTaskResponseUnknown},
      {{{"Content-Type", "text/html"}}, VeltoTaskResponseMarkup},
      {{{"Content-Type", "text/html; charset=utf-8"}}, VeltoTaskResponseUnknown},
      {{}, VeltoTaskResponseUnknown},
  };
  for (const auto& [headers, type] : table) {
    const auto response = responseTo(Answer{.headers = headers});
    EXPECT_EQ(response->responseType, type) << response->description();
    EXPECT_FALSE(response->error);
    EXPECT_TRUE(response->headers);
  }
}

TEST_F(TransportTest, FailuresOfTheTransport) {
  auto response = responseTo(Answer::failure(NSError{"libcurl", 28, "timed out"}));
  EXPECT_EQ(response->error->errorCode, 4);
  EXPECT_EQ(response->error->error->code, 28);

  response = responseTo(Answer{.isHTTP = false});
  EXPECT_EQ(response->error->errorCode, 1);
  EXPECT_TRUE(response->data);

  response = responseTo(Answer::withoutData());
  EXPECT_EQ(response->error->errorCode, 1);
  EXPECT_FALSE(response->data);
}

TEST_F(TransportTest, RedirectsNeverLeaveHttpsAndKeepCredentialsWithTheirServer) {
  const auto sentOn = [](int code, const char* to) {
    return Answer{.status = code, .headers = {{"Location", to}}};
  };
  for (const int code : {301, 302, 303, 307, 308})
    EXPECT_EQ(responseTo(sentOn(code, "http://ads.velto.example/"))->error->errorCode,
              VeltoErrorNoConnection);
  EXPECT_TRUE(platform->urlSession().requests("http://").empty());
  EXPECT_EQ(responseTo(sentOn(302, ""))->error->errorCode, VeltoErrorDeveloper);

  auto& session = platform->urlSession();
  NSURLRequest request{*NSURL::URLWithString("http://a.example/x/y?q"), "POST", {}, "body"};
  for (const auto* name : {"Authorization", "Cookie", "Content-Type", "X-Kept"})
    request.allHTTPHeaderFields.set(name, "v");
  const std::tuple<int, const char*, const char*, const char*> table[] = {
      {302, "../z w", "http://a.example/z%20w", "GET Authorization Cookie X-Kept"},
      {303, "//A.example:81/", "http://A.example:81/", "GET X-Kept"},
      {307, "?p", "http://a.example/x/y?p", "POST Authorization Cookie Content-Type X-Kept body"},
      {308, "https://a.example/", "https://a.example/", "POST Content-Type X-Kept body"}};
  for (const auto& [code, location, target, form] : table) {
    session.enqueue(sentOn(code, location));
    session.dataTask(request, nullptr);
    platform->runUntilIdle();
    const auto& last = session.tasks().back()->request();
    std::string got = last.httpMethod;
    for (const auto& [name, value] : last.allHTTPHeaderFields.fields()) got += " " + name;
    EXPECT_EQ(last.url.absoluteString(), target);
    EXPECT_EQ(got + (last.httpBody ? " " + *last.httpBody : ""), form) << location;
  }
}

TEST_F(TransportTest, DownloadsHandOverWhateverBodyCame) {
  platform->urlSession().enqueue(Answer{.status = 404, .body = "missing"});
  std::vector<std::optional<std::string>> bodies;
  const auto note = [&](auto body) { bodies.push_back(body); };
  VeltoTaskManager::executeTaskForDownloadData(std::nullopt, note);
  EXPECT_EQ(bodies.size(), 1U) << "what cannot be asked for is answered at once";
  VeltoTaskManager::executeTaskForDownloadData("https://cdn.example/x", note);
  platform->runUntilIdle();
  EXPECT_EQ(bodies, (std::vector<std::optional<std::string>>{std::nullopt, "missing"}));
}

TEST_F(TransportTest, NumbersInHeaders) {
  using Number = std::optional<double>;
  const auto check = [&](std::vector<HeaderFields::Field> fields, CGSize size, Number timer, Number ttl) {
    fields.emplace_back("x-content", "html");
    const auto headers = responseTo(Answer{.headers = std::move(fields)})->headers;
    EXPECT_EQ(headers->size(), size);
    EXPECT_EQ(headers->timerSeconds(), timer);
    EXPECT_EQ(headers->ttl(), ttl);
  };
  check({{"x-width", "320"}, {"x-height", "50.5"}, {"x-fst", "5000"}, {"x-ttl", " 30s"}}, {320, 50.5}, 5, 30);
  check({{"x-width", "320"}}, {}, {}, {});
  check({{"x-width", "320px"}, {"x-height", "50"}, {"x-fst", "soon"}, {"x-ttl", ""}}, {}, 0, 0);
}

}  // namespace
}  // namespace velto
