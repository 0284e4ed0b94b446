// Requests in, scripted answers out.
#include "velto/headless/network/ScriptedURLSession.h"

#include "velto/headless/VirtualQueue.h"
#include "velto/platform/Redirection.h"
#include "velto/platform/foundation/Text.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <stdexcept>

namespace velto::headless {
namespace {

bool contains(const NSURLRequest& request, const std::string& part) {
  return request.url.absoluteString().find(part) != std::string::npos;
}

ScriptedURLSession::Matcher urlContains(const std::string& part) {
  return [part](const NSURLRequest& request) { return contains(request, part); };
}

ScriptedURLSession::Answerer always(Answer answer) {
  return [answer = std::move(answer)](const NSURLRequest&) { return answer; };
}

// What a phone's transport means by its codes, for errors whose cause was not scripted.
NSErrorCause causeOf(const NSError& error) {
  static const std::map<int64_t, NSErrorCause> causes{{-1001, NSErrorCause::TimedOut},
                                                      {-1003, NSErrorCause::NameNotFound},
                                                      {-1004, NSErrorCause::NotConnected},
                                                      {-1005, NSErrorCause::ConnectionLost},
                                                      {-1009, NSErrorCause::Offline},
                                                      {-1103, NSErrorCause::TooLarge},
                                                      {-1200, NSErrorCause::SecureConnectionFailed},
                                                      {-1202, NSErrorCause::Untrusted}};
  const auto known = causes.find(error.code);
  const bool isScripted = error.cause != NSErrorCause::Unknown || error.domain != "NSURLErrorDomain";
  return isScripted || known == causes.end() ? error.cause : known->second;
}

HeaderFields fieldsOf(const Answer& answer) {
  HeaderFields fields;
  for (const auto& [name, value] : answer.headers) fields.add(name, value);
  return fields;
}

Answer failedAfter(std::chrono::nanoseconds delay, NSError error) {
  auto answer = Answer::failure(std::move(error));
  answer.delay = delay;
  return answer;
}

}  // namespace

Answer Answer::failure(NSError error) {
  Answer answer;
  error.cause = causeOf(error);
  answer.error = std::move(error);
  return answer;
}

Answer Answer::offline() {
  return failure({"NSURLErrorDomain", -1009, "The Internet connection appears to be offline."});
}

Answer Answer::captivePortal() {
  return {.headers = {{"Content-Type", "text/html"}},
          .body = "<html><body><form action='/login'>Welcome to the network</form></body></html>"};
}

Answer Answer::untrusted() {
  return failure({"NSURLErrorDomain", -1202, "The certificate for this server is invalid."});
}

Answer Answer::silence() {
  return failedAfter(std::chrono::seconds(60), {"NSURLErrorDomain", -1001, "The request timed out."});
}

Answer Answer::withoutData() {
  Answer answer;
  answer.body.reset();
  return answer;
}

ScriptedTask::ScriptedTask(NSURLRequest request, NSURLSession::Completion completion, int redirects,
                           ScriptedURLSession& session)
    : request_(std::move(request)),
      completion_(std::move(completion)),
      redirects_(redirects),
      mutex_(session.mutex_),
      session_(&session) {}

bool ScriptedTask::isAnswered() const {
  std::lock_guard lock(*mutex_);
  return !session_;
}

void ScriptedTask::answer(const Answer& answer) {
  ScriptedURLSession* session = nullptr;
  NSURLSession::Completion completion;
  {
    std::lock_guard lock(*mutex_);
    session = std::exchange(session_, nullptr);
    completion = std::exchange(completion_, nullptr);
  }
  if (!session)
    throw std::logic_error("velto::headless: the request was answered before: " +
                           request_.url.absoluteString());
  session->finish(request_, answer, std::move(completion), redirects_);
}

ScriptedURLSession::ScriptedURLSession(std::shared_ptr<VirtualQueue> queue) : queue_(std::move(queue)) {}

ScriptedURLSession::~ScriptedURLSession() {
  // Completions that were never called go uncalled; tests may keep the tasks.
  for (const auto& task : tasks()) {
    Completion dropped;
    std::lock_guard lock(*mutex_);
    task->session_ = nullptr;
    dropped.swap(task->completion_);
  }
}

void ScriptedURLSession::respond(Matcher matches, Answerer answerer) {
  std::lock_guard lock(*mutex_);
  rules_.push_back({std::move(matches), std::move(answerer)});
}

void ScriptedURLSession::respond(Matcher matches, Answer answer) {
  respond(std::move(matches), always(std::move(answer)));
}

void ScriptedURLSession::respond(const std::string& urlPart, Answer answer) {
  respond(urlContains(urlPart), always(std::move(answer)));
}

void ScriptedURLSession::clearRules() {
  std::lock_guard lock(*mutex_);
  rules_.clear();
  queued_.clear();
}

void ScriptedURLSession::enqueue(const std::string& urlPart, Answer answer) {
  std::lock_guard lock(*mutex_);
  queued_.push_back({urlContains(urlPart), always(std::move(answer))});
}

std::vector<std::shared_ptr<ScriptedTask>> ScriptedURLSession::tasks() const {
  std::lock_guard lock(*mutex_);
  return tasks_;
}

std::vector<std::shared_ptr<ScriptedTask>> ScriptedURLSession::pending() const {
  auto tasks = this->tasks();
  std::erase_if(tasks, [](const auto& task) { return task->isAnswered(); });
  return tasks;
}

void ScriptedURLSession::forgetAnswered() {
  std::lock_guard lock(*mutex_);
  std::erase_if(tasks_, [](const auto& task) { return !task->session_; });
}

std::vector<NSURLRequest> ScriptedURLSession::requests(const std::string& urlPart) const {
  std::vector<NSURLRequest> found;
  for (const auto& task : tasks())
    if (contains(task->request(), urlPart)) found.push_back(task->request());
  return found;
}

void ScriptedURLSession::dataTask(NSURLRequest request, Completion completion) {
  start(std::move(request), std::move(completion), 0);
}

void ScriptedURLSession::start(NSURLRequest request, Completion completion, int redirects) {
  std::shared_ptr<ScriptedTask> task(
      new ScriptedTask(std::move(request), std::move(completion), redirects, *this));
  {
    std::lock_guard lock(*mutex_);
    tasks_.push_back(task);
  }
  const auto scheme = lowercased(task->request_.url.scheme().value_or(""));
  if (scheme != "http" && scheme != "https")
    task->answer(Answer::failure({"NSURLErrorDomain", -1002, "unsupported URL"}));
  else if (const auto answer = answerFor(task->request_))
    task->answer(*answer);
}

std::optional<Answer> ScriptedURLSession::answerFor(const NSURLRequest& request) {
  Answerer answerer;
  {
    std::lock_guard lock(*mutex_);
    const auto matches = [&](const Rule& rule) { return rule.matches(request); };
    if (auto queued = std::find_if(queued_.begin(), queued_.end(), matches); queued != queued_.end()) {
      answerer = std::move(queued->answerer);
      queued_.erase(queued);
    } else if (auto rule = std::find_if(rules_.begin(), rules_.end(), matches); rule != rules_.end()) {
      answerer = rule->answerer;
    }
  }
  return answerer ? std::optional(answerer(request)) : std::nullopt;
}

// Every server keeps its connection open.
bool ScriptedURLSession::isReused(const NSURLRequest& request) {
  std::lock_guard lock(*mutex_);
  return !connectedHosts_.insert(request.url.host().value_or("")).second;
}

Handle ScriptedURLSession::connectAhead(const NSURL& url) {
  queue_->requireMain("NSURLSession::connectAhead");
  std::lock_guard lock(*mutex_);
  connectedHosts_.insert(url.host().value_or(""));
  connectedAhead_.push_back(url);
  return {};
}

void ScriptedURLSession::finish(const NSURLRequest& request, const Answer& answer, Completion completion,
                                int redirects) {
  const auto fail = [&](NSError error) {
    finish(request, failedAfter(answer.delay, std::move(error)), std::move(completion), redirects);
  };
  if (!answer.error && answer.isHTTP) {
    auto redirection = redirectionFor(request, answer.status, fieldsOf(answer), redirects);
    if (redirection.error) return fail(std::move(*redirection.error));
    if (redirection.request)
      return queue_->postOffMain(answer.delay, [this, next = std::move(*redirection.request),
                                                completion = std::move(completion), redirects]() mutable {
        start(std::move(next), std::move(completion), redirects + 1);
      });
  }
  if (!answer.error && answer.body && answer.body->size() > request.maximumBodySize.value_or(SIZE_MAX))
    return fail({"NSURLErrorDomain", -1103, "resource exceeds maximum size"});
  std::shared_ptr<NSURLResponse> response;
  if (!answer.error) {
    response = std::make_shared<NSURLResponse>();
    response->url = request.url.absoluteString();
    response->isHTTP = answer.isHTTP;
    if (answer.isHTTP) {
      response->statusCode = answer.status;
      response->allHeaderFields = fieldsOf(answer);
      // Its time is all on the server: the request leaves at once, and the answer comes in one piece.
      const double now = queue_->monotonicSeconds();
      const double delay = std::chrono::duration<double>(answer.delay).count();
      response->metrics = NSURLTaskMetrics{isReused(request), now, now + delay};
    }
  }
  queue_->postOffMain(answer.delay,
                      [answer, response = std::move(response), completion = std::move(completion)] {
                        if (!completion) return;
                        if (answer.error)
                          completion(std::nullopt, nullptr, answer.error);
                        else
                          completion(answer.body, response, std::nullopt);
                      });
}

}  // namespace velto::headless
