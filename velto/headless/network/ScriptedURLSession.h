// The URL session of the headless platform: it records every request and answers as the test says.
// Completions run as events of the virtual loop that stand for the transport's thread:
// mainQueue().isCurrent() is false inside, and whoever touches a view there without hopping to the main queue
// is told so by an exception.
#pragma once

#include "velto/Export.h"
#include "velto/platform/NSURLSession.h"

#include <chrono>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

namespace velto::headless {

class ScriptedURLSession;
class VirtualQueue;

struct VELTO_EXPORT Answer {
  int status = 200;
  std::vector<HeaderFields::Field> headers = {};
  std::optional<std::string> body = "";  // nothing: an answer without any data
  std::chrono::nanoseconds delay{0};     // virtual time from the request to the answer
  bool isHTTP = true;                    // false: a response without status and headers
  std::optional<NSError> error = {};     // set: the transport failed, all of the above but the delay is void

  static Answer failure(NSError error);
  // No connection to the server, as a phone out of coverage reports it.
  static Answer offline();
  static Answer withoutData();
  // No server of ours answers, but the network itself, with a page to log in at; over HTTPS it can only offer a
  // certificate that is not the server's.
  static Answer captivePortal();
  static Answer untrusted();
  // Nobody answers for as long as transports wait.
  static Answer silence();
};

// One request on its way. Shared by the session and the test.
class VELTO_EXPORT ScriptedTask {
 public:
  const NSURLRequest& request() const { return request_; }
  bool isAnswered() const;

  // Answers a request that no rule answered, now plus the answer's delay. Throws std::logic_error on a second
  // answer.
  void answer(const Answer& answer);

 private:
  friend class ScriptedURLSession;
  ScriptedTask(NSURLRequest request, NSURLSession::Completion completion, int redirects,
               ScriptedURLSession& session);

  NSURLRequest request_;
  NSURLSession::Completion completion_;
  int redirects_;
  std::shared_ptr<std::mutex> mutex_;  // the session's; guards completion_ and session_
  ScriptedURLSession* session_;        // null once answered, or when the platform went
};

class VELTO_EXPORT ScriptedURLSession : public NSURLSession {
 public:
  using Matcher = std::function<bool(const NSURLRequest&)>;
  using Answerer = std::function<Answer(const NSURLRequest&)>;

  explicit ScriptedURLSession(std::shared_ptr<VirtualQueue> queue);
  ~ScriptedURLSession() override;

  // Rules: the first that matches answers, again and again. Rules are asked inside the request's dataTask(), and do
  // not call the session themselves; answerers may.
  void respond(Matcher matches, Answer answer);
  void respond(Matcher matches, Answerer answerer);
  // A rule for requests whose URL contains the text; an empty text matches every request.
  void respond(const std::string& urlPart, Answer answer);
  void clearRules();

  // Answers for one request each, taken before any rule, in order of the queue. The second form only for
  // requests whose URL contains the text.
  void enqueue(Answer answer) { enqueue("", std::move(answer)); }
  void enqueue(const std::string& urlPart, Answer answer);

  // Every request so far in order, those that followed a redirect included, and those still without an
  // answer.
  std::vector<std::shared_ptr<ScriptedTask>> tasks() const;
  std::vector<std::shared_ptr<ScriptedTask>> pending() const;
  // For long simulations: those that were answered are let go of.
  void forgetAnswered();
  // The requests whose URL contains the text.
  std::vector<NSURLRequest> requests(const std::string& urlPart = "") const;

  // The servers that connections were opened to ahead of requests. Such a connection is there for the next request.
  const std::vector<NSURL>& connectedAhead() const { return connectedAhead_; }

  void dataTask(NSURLRequest request, Completion completion) override;
  Handle connectAhead(const NSURL& url) override;

 private:
  friend class ScriptedTask;
  struct Rule {
    Matcher matches;
    Answerer answerer;
  };
  void start(NSURLRequest request, Completion completion, int redirects);
  std::optional<Answer> answerFor(const NSURLRequest& request);
  void finish(const NSURLRequest& request, const Answer& answer, Completion completion, int redirects);

  bool isReused(const NSURLRequest& request);

  std::shared_ptr<VirtualQueue> queue_;
  std::shared_ptr<std::mutex> mutex_ = std::make_shared<std::mutex>();
  std::vector<Rule> rules_;
  std::vector<Rule> queued_;
  std::set<std::string> connectedHosts_;
  std::vector<NSURL> connectedAhead_;
  std::vector<std::shared_ptr<ScriptedTask>> tasks_;
};

}  // namespace velto::headless
