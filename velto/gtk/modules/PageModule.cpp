// What runs in the web process: the library's statements, in the page's own world. They come as messages, without the
// gesture that the engine lends to whatever an application evaluates, and not under the page's content security policy; and
// the application's process needs no JavaScript engine for the answers.
#include "velto/gtk/modules/PageMessages.h"

#include <webkit/webkit-web-process-extension.h>

#include <memory>
#include <string>

namespace velto::gtk {
namespace {

constexpr char frameKey[] = "velto-main-frame";
constexpr char contextKey[] = "velto-context";

template <class Object>
struct Unref {
  void operator()(Object* object) const { g_object_unref(object); }
};
template <class Object>
using Owned = std::unique_ptr<Object, Unref<Object>>;

struct FreeText {
  void operator()(char* text) const { g_free(text); }
};
using Text = std::unique_ptr<char, FreeText>;

void freeWeak(gpointer weak) {
  g_weak_ref_clear(static_cast<GWeakRef*>(weak));
  delete static_cast<GWeakRef*>(weak);
}

// The main frame of a page is not to be asked for; but it shows itself whenever it gets a window of the language.
void windowCleared(WebKitScriptWorld*, WebKitWebPage* page, WebKitFrame* frame, gpointer) {
  if (!webkit_frame_is_main_frame(frame)) return;
  g_object_set_data(G_OBJECT(page), contextKey, nullptr);
  auto* weak = static_cast<GWeakRef*>(g_object_get_data(G_OBJECT(page), frameKey));
  if (!weak) {
    weak = new GWeakRef;
    g_weak_ref_init(weak, nullptr);
    g_object_set_data_full(G_OBJECT(page), frameKey, weak, freeWeak);
  }
  g_weak_ref_set(weak, frame);
}

Owned<WebKitFrame> mainFrame(WebKitWebPage* page) {
  auto* weak = static_cast<GWeakRef*>(g_object_get_data(G_OBJECT(page), frameKey));
  return Owned<WebKitFrame>(weak ? static_cast<WebKitFrame*>(g_weak_ref_get(weak)) : nullptr);
}

struct Answer {
  page::Outcome outcome = page::Outcome::Undefined;
  std::string text;
};

Answer answerOf(JSCContext* context, JSCValue* value) {
  if (auto* exception = jsc_context_get_exception(context)) {
    const Text text(jsc_exception_to_string(exception));
    jsc_context_clear_exception(context);
    return {page::Outcome::Exception, text ? text.get() : ""};
  }
  if (jsc_value_is_undefined(value)) return {};
  const Text text(jsc_value_to_json(value, 0));
  jsc_context_clear_exception(context);  // of a value that cannot be told
  return text ? Answer{page::Outcome::Value, text.get()} : Answer{page::Outcome::Unsupported, ""};
}

// Asked for each time: a statement may have put another document there. Kept until that comes, since the engine makes
// it anew, with all that belongs to it, where nobody has it.
Owned<JSCContext> contextOf(WebKitWebPage* page, WebKitFrame* frame) {
  Owned<JSCContext> context(webkit_frame_get_js_context(frame));
  g_object_set_data_full(G_OBJECT(page), contextKey, g_object_ref(context.get()), g_object_unref);
  return context;
}

Answer run(WebKitWebPage* page, WebKitFrame* frame, GVariant* statement) {
  gsize size = 0;
  const auto* code = static_cast<const char*>(g_variant_get_fixed_array(statement, &size, 1));
  if (!g_utf8_validate_len(code, size, nullptr))
    return {page::Outcome::Exception, "SyntaxError: The statement is not UTF-8"};
  const auto context = contextOf(page, frame);
  const Owned<JSCValue> value(
      jsc_context_evaluate(context.get(), size ? code : "", static_cast<gssize>(size)));
  return answerOf(context.get(), value.get());
}

gboolean received(WebKitWebPage* page, WebKitUserMessage* message, gpointer) {
  const char* name = webkit_user_message_get_name(message);
  if (g_strcmp0(name, page::start) == 0) return TRUE;
  const bool isAnswered = g_strcmp0(name, page::run) == 0;
  if (!isAnswered && g_strcmp0(name, page::tell) != 0) return FALSE;
  const auto frame = mainFrame(page);
  if (!frame) return FALSE;
  GVariant* statements = webkit_user_message_get_parameters(message);
  Answer last;
  for (gsize i = 0; i < g_variant_n_children(statements); ++i) {
    GVariant* statement = g_variant_get_child_value(statements, i);
    last = run(page, frame.get(), statement);
    g_variant_unref(statement);
  }
  if (!isAnswered) return TRUE;
  GVariant* words = g_variant_new(page::answerType, static_cast<guint>(last.outcome), last.text.c_str());
  webkit_user_message_send_reply(message, webkit_user_message_new(page::run, words));
  return TRUE;
}

void pageCreated(WebKitWebProcessExtension*, WebKitWebPage* page, gpointer) {
  g_signal_connect(page, "user-message-received", G_CALLBACK(received), nullptr);
}

}  // namespace
}  // namespace velto::gtk

extern "C" __attribute__((visibility("default"))) void webkit_web_process_extension_initialize(
    WebKitWebProcessExtension* extension) {
  g_signal_connect(extension, "page-created", G_CALLBACK(velto::gtk::pageCreated), nullptr);
  g_signal_connect(webkit_script_world_get_default(), "window-object-cleared",
                   G_CALLBACK(velto::gtk::windowCleared), nullptr);
}
