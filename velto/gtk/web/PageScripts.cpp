// Statements on their way to the page's process, and results on their way back.
#include "velto/gtk/web/PageScripts.h"

#include "velto/gtk/modules/PageMessages.h"
#include "velto/platform/foundation/GMemory.h"

#include <utility>

namespace velto::gtk {
namespace {

// The module finds the page's main frame when that gets a window of the language, which every script brings about.
constexpr char anyScript[] = "0";

NSError scriptError(int code, const char* text) {
  return {g_quark_to_string(webkit_javascript_error_quark()), code, text};
}

NSError pageGone() {
  return scriptError(WEBKIT_JAVASCRIPT_ERROR_SCRIPT_FAILED, "The page went away");
}

NSError unsupported() {
  return scriptError(WEBKIT_JAVASCRIPT_ERROR_INVALID_RESULT, "Unsupported result type");
}

WebKitUserMessage* messageWith(const char* name, const std::vector<std::string>& statements) {
  GVariantBuilder list;
  g_variant_builder_init(&list, G_VARIANT_TYPE(page::statementsType));
  for (const auto& statement : statements)
    g_variant_builder_add_value(
        &list, g_variant_new_fixed_array(G_VARIANT_TYPE_BYTE, statement.data(), statement.size(), 1));
  return webkit_user_message_new(name, g_variant_builder_end(&list));
}

void give(const PageScripts::Completion& completion, WebKitUserMessage* reply) {
  GVariant* words = reply ? webkit_user_message_get_parameters(reply) : nullptr;
  if (!words || !g_variant_is_of_type(words, G_VARIANT_TYPE(page::answerType)))
    return completion({}, pageGone());
  guint outcome = 0;
  const char* text = nullptr;
  g_variant_get(words, "(u&s)", &outcome, &text);
  switch (static_cast<page::Outcome>(outcome)) {
    case page::Outcome::Undefined:
      return completion(JSON(), std::nullopt);
    case page::Outcome::Exception:
      return completion(std::nullopt, scriptError(WEBKIT_JAVASCRIPT_ERROR_SCRIPT_FAILED, text));
    case page::Outcome::Value:
      if (auto value = readJSONOfPage(text)) return completion(std::move(value), std::nullopt);
      break;
    case page::Outcome::Unsupported:
      break;
  }
  completion(std::nullopt, unsupported());
}

}  // namespace

NSError errorFrom(const GError& error) {
  return {g_quark_to_string(error.domain), error.code, error.message ? error.message : ""};
}

struct PageScripts::Reply {
  std::weak_ptr<PageScripts> scripts;
  uint64_t call;
};

PageScripts::PageScripts(WebKitWebView* view) : view_(view) {
  const GOwned<WebKitUserScript, webkit_user_script_unref> script(
      webkit_user_script_new(anyScript, WEBKIT_USER_CONTENT_INJECT_TOP_FRAME,
                             WEBKIT_USER_SCRIPT_INJECT_AT_DOCUMENT_START, nullptr, nullptr));
  webkit_user_content_manager_add_script(webkit_web_view_get_user_content_manager(view_), script.get());
}

PageScripts::~PageScripts() {
  flush();  // a page that goes still hears the last word
  dropPending();
}

void PageScripts::run(std::string statement, Completion completion) {
  if (!hasDocument_) {
    early_.emplace_back(std::move(statement), std::move(completion));
    return;
  }
  pending_.push_back(std::move(statement));
  if (!completion) {
    if (!turnEnd_) turnEnd_ = g_idle_add_full(G_PRIORITY_HIGH, turnEnded, this, nullptr);
    return;
  }
  calls_.emplace(nextCall_, std::move(completion));
  send(answered, new Reply{weak_from_this(), nextCall_++});
}

gboolean PageScripts::turnEnded(gpointer self) noexcept {
  auto* scripts = static_cast<PageScripts*>(self);
  scripts->turnEnd_ = 0;
  scripts->flush();
  return G_SOURCE_REMOVE;
}

void PageScripts::dropPending() {
  pending_.clear();
  if (turnEnd_) g_source_remove(std::exchange(turnEnd_, 0));
}

void PageScripts::flush() {
  if (!pending_.empty()) send(nullptr, nullptr);
}

void PageScripts::send(GAsyncReadyCallback whenAnswered, gpointer data) {
  if (turnEnd_) g_source_remove(std::exchange(turnEnd_, 0));
  const auto statements = std::exchange(pending_, {});
  webkit_web_view_send_message_to_page(view_, messageWith(whenAnswered ? page::run : page::tell, statements),
                                       nullptr, whenAnswered, data);
}

void PageScripts::answered(GObject* view, GAsyncResult* result, gpointer data) noexcept {
  const std::unique_ptr<Reply> reply(static_cast<Reply*>(data));
  const auto message = GPtr<WebKitUserMessage>::adopt(
      webkit_web_view_send_message_to_page_finish(WEBKIT_WEB_VIEW(view), result, nullptr));
  const auto scripts = reply->scripts.lock();
  if (!scripts) return;
  if (const auto call = scripts->calls_.extract(reply->call)) give(call.mapped(), message);
}

void PageScripts::documentChanged() {
  dropPending();
  if (!hasDocument_) {
    hasDocument_ = true;
    for (auto& [statement, completion] : std::exchange(early_, {}))
      run(std::move(statement), std::move(completion));
    return;
  }
  if (calls_.empty()) return;
  // The last of them may have met the new document already. Answers come in
  // order, so one more call tells: what is not answered before it went with the
  // old document, of which the engine says nothing when it changes processes.
  run("", [weak = weak_from_this(), next = nextCall_](const auto&, const auto&) {
    if (const auto scripts = weak.lock()) scripts->abandonBefore(next);
  });
}

void PageScripts::processEnded() {
  const auto self = shared_from_this();  // a completion may remove the view
  dropPending();
  for (const auto& [statement, completion] : std::exchange(early_, {}))
    if (completion) completion(std::nullopt, pageGone());
  abandonBefore(nextCall_);
}

void PageScripts::abandonBefore(uint64_t id) {
  const auto self = shared_from_this();  // a completion may remove the view
  while (!calls_.empty() && calls_.begin()->first < id) {
    const auto call = calls_.extract(calls_.begin());
    call.mapped()(std::nullopt, pageGone());
  }
}

}  // namespace velto::gtk
