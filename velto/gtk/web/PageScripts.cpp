// Statements: the helper in the page, the two ways of running, and results on their way back.
#include "velto/gtk/web/PageScripts.h"

namespace velto::gtk {
namespace {

// The page may replace whatever it can reach, and would then be called inside the
// gesture. So everything here is taken before the page's first script, and no object of
// the page's prototypes is touched until the message has come. An answer is an object
// of our own without prototype, lest a promise or a `then` of the page's be waited for.
constexpr char helper[] = R"((() => {
  const evaluate = eval;
  const channel = new MessageChannel();
  const post = channel.port2.postMessage.bind(channel.port2);
  let first = null, last = null, refused = false;
  const mayEvaluate = () => {
    if (!refused) try { evaluate(''); } catch { refused = true; }
    return !refused;
  };
  channel.port1.onmessage = () => {
    const job = first;
    first = job.next;
    if (!job.body && !mayEvaluate()) return job.resolve({ __proto__: null, refused: true });
    try {
      job.resolve({ __proto__: null, value: job.body ? job.body() : evaluate(job.source) });
    } catch (error) {
      job.reject(error);
    }
  };
  Object.defineProperty(window, '__veltoRun', { value: (source, body) => ({
    __proto__: null,
    then: (resolve, reject) => {
      const job = { __proto__: null, source, body, resolve, reject, next: null };
      if (first) last.next = job; else first = job;
      last = job;
      post(0);
    },
  }) });
})())";

// A document without the helper is the empty one from before the first load, with nobody to use a gesture.
std::string handOver(const std::string& literal) {
  return "const source = " + literal + R"(;
    if (typeof __veltoRun === 'function') return __veltoRun(source);
    return { __proto__: null, value: (0, eval)(source) };)";
}

NSError scriptError(int code, const char* text) {
  return {g_quark_to_string(webkit_javascript_error_quark()), code, text};
}

NSError pageGone() {
  return scriptError(WEBKIT_JAVASCRIPT_ERROR_SCRIPT_FAILED, "The page went away");
}

bool isSyntax(JSCContext* context, const std::string& code) {
  JSCException* wrong = nullptr;
  const auto result = jsc_context_check_syntax(context, code.data(), static_cast<gssize>(code.size()),
                                               JSC_CHECK_SYNTAX_MODE_SCRIPT, "statement", 1, &wrong);
  const auto dropped = GPtr<JSCException>::adopt(wrong);
  return result == JSC_CHECK_SYNTAX_RESULT_SUCCESS;
}

std::optional<JSON> readValue(JSCValue* answer) {
  const auto value = GPtr<JSCValue>::adopt(jsc_value_object_get_property(answer, "value"));
  if (jsc_value_is_undefined(value)) return std::make_optional<JSON>();
  const GText text(jsc_value_to_json(value, 0));
  return text ? readJSONOfPage(text.get()) : std::nullopt;
}

}  // namespace

NSError errorFrom(const GError& error) {
  return {g_quark_to_string(error.domain), error.code, error.message ? error.message : ""};
}

void PageScripts::Statement::answer(std::optional<JSON> value, std::optional<NSError> error) const {
  if (completion) completion(std::move(value), std::move(error));
}

struct PageScripts::Reply {
  std::weak_ptr<PageScripts> scripts;
  uint64_t call;
};

PageScripts::PageScripts(WebKitWebView* view) : view_(view) {
  const GOwned<WebKitUserScript, webkit_user_script_unref> script(
      webkit_user_script_new(helper, WEBKIT_USER_CONTENT_INJECT_TOP_FRAME,
                             WEBKIT_USER_SCRIPT_INJECT_AT_DOCUMENT_START, nullptr, nullptr));
  webkit_user_content_manager_add_script(webkit_web_view_get_user_content_manager(view_), script.get());
}

void PageScripts::run(std::string statement, Completion completion) {
  Statement next{std::move(statement), std::move(completion)};
  if (!evalRefused_) return submit(std::move(next));
  waiting_.push_back(std::move(next));
  runWaiting();
}

void PageScripts::submit(Statement statement) {
  // A JSON text is a string literal of the language; what is not UTF-8 cannot be a statement.
  const auto literal = writeJSON(statement.source, false);
  ++unanswered_;
  call(literal ? handOver(*literal) : "throw new SyntaxError('The statement is not UTF-8')",
       {std::move(statement), document_, true});
}

// Statements that were sent before the page was known to
// refuse come back one by one; later ones keep behind them.
void PageScripts::runWaiting() {
  while (unanswered_ == 0 && !waiting_.empty()) {
    Statement next = std::move(waiting_.front());
    waiting_.pop_front();
    runWithoutEval(std::move(next));
  }
}

void PageScripts::call(const std::string& body, Call call) {
  const uint64_t id = nextCall_++;
  calls_.emplace(id, std::move(call));
  webkit_web_view_call_async_javascript_function(view_, body.data(), static_cast<gssize>(body.size()),
                                                 nullptr, nullptr, nullptr, nullptr, answered,
                                                 new Reply{weak_from_this(), id});
}

void PageScripts::answered(GObject* view, GAsyncResult* result, gpointer data) noexcept {
  const std::unique_ptr<Reply> reply(static_cast<Reply*>(data));
  GError* error = nullptr;
  const auto value = GPtr<JSCValue>::adopt(
      webkit_web_view_call_async_javascript_function_finish(WEBKIT_WEB_VIEW(view), result, &error));
  const GErrorOwned owned(error);
  const auto scripts = reply->scripts.lock();
  if (!scripts) return;
  if (auto call = scripts->calls_.extract(reply->call))
    scripts->finish(std::move(call.mapped()), value, error);
}

void PageScripts::finish(Call call, JSCValue* value, const GError* error) {
  const bool samePage = call.document == document_;
  const bool refused = value && jsc_value_is_object(value) && jsc_value_object_has_property(value, "refused");
  if (call.mayBeRefused && samePage) {
    --unanswered_;
    if (refused) {
      evalRefused_ = GPtr<JSCContext>::retain(jsc_value_get_context(value));
      runWithoutEval(std::move(call.statement));
    }
    runWaiting();
    if (refused) return;
  }
  if (error) return call.statement.answer(std::nullopt, errorFrom(*error));
  if (refused) return call.statement.answer(std::nullopt, pageGone());
  auto read = readValue(value);
  if (read) return call.statement.answer(std::move(read), std::nullopt);
  call.statement.answer(std::nullopt,
                        scriptError(WEBKIT_JAVASCRIPT_ERROR_INVALID_RESULT, "Unsupported result type"));
}

void PageScripts::runWithoutEval(Statement statement) {
  // The line break ends a comment that the statement may end in.
  const std::string expression = "() => (" + statement.source + "\n)";
  const std::string statements = "() => {" + statement.source + "\n}";
  std::string body = "() => { throw new SyntaxError(); }";
  if (isSyntax(evalRefused_, expression))
    body = expression;
  else if (isSyntax(evalRefused_, statements))
    body = statements;
  call("return __veltoRun(null, " + body + ")", {std::move(statement), document_, false});
}

void PageScripts::documentChanged() {
  forgetDocument();
  if (calls_.empty()) return;
  // The last of them may have met the new document already. Answers come in
  // order, so one more call tells: what is not answered before it went with the
  // old document, of which the engine says nothing when it changes processes.
  run("", [weak = weak_from_this(), next = nextCall_](const auto&, const auto&) {
    if (const auto scripts = weak.lock()) scripts->abandonBefore(next);
  });
}

void PageScripts::processEnded() {
  forgetDocument();
  abandonBefore(nextCall_);
}

void PageScripts::forgetDocument() {
  ++document_;
  evalRefused_.reset();
  unanswered_ = 0;
  for (const auto& statement : std::exchange(waiting_, {})) statement.answer(std::nullopt, pageGone());
}

void PageScripts::abandonBefore(uint64_t id) {
  const auto self = shared_from_this();  // a completion may remove the view
  while (!calls_.empty() && calls_.begin()->first < id) {
    const auto call = calls_.extract(calls_.begin());
    call.mapped().statement.answer(std::nullopt, pageGone());
  }
}

}  // namespace velto::gtk
