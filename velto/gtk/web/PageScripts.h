// Runs the library's statements in a web view's page without lending the page a person's gesture. Owned by
// the web view's peer; main thread only.
//
// The engine treats whatever the application evaluates as if a person had just touched the page, and for a
// second lets it open windows and leave for other applications. So a statement is only handed over to a
// helper in the page (a user script that is there before the page's own), which posts itself a message and
// runs it from that, outside the gesture. A statement runs as global code where the page allows eval(). Where
// its content security policy does not, it runs as the body of a function: first read as an expression, whose
// value is the result, else as statements without result.
#pragma once

#include "velto/platform/NSError.h"
#include "velto/platform/foundation/GMemory.h"
#include "velto/platform/foundation/JSON.h"

#include <webkit/webkit.h>

#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

namespace velto::gtk {

NSError errorFrom(const GError& error);

class PageScripts : public std::enable_shared_from_this<PageScripts> {
 public:
  using Completion = std::function<void(std::optional<JSON>, std::optional<NSError>)>;

  // The view outlives this.
  explicit PageScripts(WebKitWebView* view);
  PageScripts(const PageScripts&) = delete;
  PageScripts& operator=(const PageScripts&) = delete;

  // In the order of the calls. The completion comes later, and not at all once this is gone.
  void run(std::string statement, Completion completion);
  // The main frame has another document from now on. Statements that went with the old one get an error.
  void documentChanged();
  // Nobody is left to answer: all of them get one, at once.
  void processEnded();

 private:
  struct Statement {
    std::string source;
    Completion completion;
    void answer(std::optional<JSON> value, std::optional<NSError> error) const;
  };
  struct Call {
    Statement statement;
    uint64_t document;
    bool mayBeRefused;
  };
  struct Reply;
  void submit(Statement statement);
  void runWaiting();
  void runWithoutEval(Statement statement);
  void call(const std::string& body, Call call);
  static void answered(GObject* view, GAsyncResult* result, gpointer data) noexcept;
  void finish(Call call, JSCValue* value, const GError* error);
  void forgetDocument();
  void abandonBefore(uint64_t call);

  WebKitWebView* view_;
  uint64_t document_ = 0;
  std::map<uint64_t, Call> calls_;  // not answered yet
  uint64_t nextCall_ = 0;
  GPtr<JSCContext> evalRefused_;   // set while the page shown is known to refuse: to check syntax in
  size_t unanswered_ = 0;          // of this page's calls, made before that was known
  std::deque<Statement> waiting_;  // behind those
};

}  // namespace velto::gtk
