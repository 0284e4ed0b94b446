// A command's round trip: a page sends expand() or close(), the host makes the change, and the page hears of
// the new state, again and again. Measured in the page, by turns in a banner of the library and in a bare web
// view whose program does the same: it takes the message, gives the view its size, shows or hides a button to close it
// with, and evaluates as many statements.
//
//   usage: velto-bench-rich-media ROUNDS
//
// The library's twenty commands in one turn are nineteen that set something, and the one that changes the state.
//
// Prints {"libraryMs": [...], "twentyMs": [...], "bareMs": [...]}, milliseconds a round trip, one sample each fifty
// of them, since the page's clock is coarse. All three take turns, short ones: three processes share the machine's processors
// anew all the time, and what one turn meets the next ones meet, too.
#include <webkit/webkit.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "LibraryPage.h"

namespace {

using velto::bench::LibraryPage;
using velto::bench::runUntil;

// Fifty changes make a sample.
constexpr char loop[] = R"(
  var samples = [], left = 0, began = 0;
  function go(state) {
    if (left % 50 === 0) {
      if (began) samples.push((performance.now() - began) / 50);
      began = performance.now();
    }
    if (left-- <= 0) { began = 0; done = true; return; }
    state === 'default' ? ask('expand') : ask('close');
  }
  var done = false;
  var further = 0;
  function run(rounds, commands) { done = false; samples = []; left = rounds; further = commands - 1; go('default'); }
)";

std::string libraryPage() {
  return std::string("<html><head><script src=\"mraid.js\"></script></head><body>ad<script>") + loop +
         "function ask(what) {"
         " for (var i = 0; i < further; ++i)"
         " mraid.setOrientationProperties({allowOrientationChange: i % 2 === 0});"
         " mraid[what](); }\n"
         "mraid.addEventListener('stateChange', function (state) { if (began) go(state); });"
         "</script></body></html>";
}

std::string barePage() {
  return std::string("<html><head></head><body>ad<script>") + loop +
         "function ask(what) { webkit.messageHandlers.bench.postMessage(what); }\n"
         "var mraid = {setPlacementType() {}, setCurrentPosition() {}, fireEvent() {},"
         " setState(state) { setTimeout(function () {}, 0); if (began) go(state); }};"
         "</script></body></html>";
}

// --- the bare program

class Bare {
 public:
  Bare() : window_(GTK_WINDOW(gtk_window_new())), view_(WEBKIT_WEB_VIEW(webkit_web_view_new())) {
    gtk_window_set_default_size(window_, 390, 600);
    auto* content = webkit_web_view_get_user_content_manager(view_);
    webkit_user_content_manager_register_script_message_handler(content, "bench", nullptr);
    g_signal_connect(content, "script-message-received::bench", G_CALLBACK(heard), this);
    gtk_widget_set_halign(GTK_WIDGET(view_), GTK_ALIGN_CENTER);
    gtk_widget_set_valign(GTK_WIDGET(view_), GTK_ALIGN_END);
    gtk_widget_set_size_request(GTK_WIDGET(view_), 320, 50);
    gtk_overlay_set_child(GTK_OVERLAY(overlay_), GTK_WIDGET(view_));
    gtk_widget_set_halign(close_, GTK_ALIGN_END);
    gtk_widget_set_valign(close_, GTK_ALIGN_START);
    gtk_widget_set_visible(close_, FALSE);
    gtk_overlay_add_overlay(GTK_OVERLAY(overlay_), close_);
    gtk_window_set_child(window_, overlay_);
    bool isLoaded = false;
    g_signal_connect(view_, "load-changed", G_CALLBACK(loaded), &isLoaded);
    gtk_window_present(window_);
    webkit_web_view_load_html(view_, barePage().c_str(), nullptr);
    runUntil([&] { return isLoaded; });
    g_signal_handlers_disconnect_by_data(view_, &isLoaded);
  }
  Bare(const Bare&) = delete;
  Bare& operator=(const Bare&) = delete;
  ~Bare() { gtk_window_destroy(window_); }

  std::string evaluate(const std::string& script) const {
    std::optional<std::string> answer;
    webkit_web_view_evaluate_javascript(view_, ("String(" + script + ")").c_str(), -1, nullptr, nullptr,
                                        nullptr, evaluated, &answer);
    runUntil([&] { return answer.has_value(); });
    return *answer;
  }

 private:
  static void loaded(WebKitWebView*, WebKitLoadEvent event, bool* flag) {
    if (event == WEBKIT_LOAD_FINISHED) *flag = true;
  }
  static void evaluated(GObject* view, GAsyncResult* result, gpointer answer) {
    auto* value = webkit_web_view_evaluate_javascript_finish(WEBKIT_WEB_VIEW(view), result, nullptr);
    char* text = value ? jsc_value_to_string(value) : nullptr;
    *static_cast<std::optional<std::string>*>(answer) = text ? text : "";
    g_free(text);
    if (value) g_object_unref(value);
  }
  void say(const std::string& statement) const {
    webkit_web_view_evaluate_javascript(view_, statement.c_str(), -1, nullptr, nullptr, nullptr, nullptr,
                                        nullptr);
  }
  static void heard(WebKitUserContentManager*, JSCValue* value, Bare* self) {
    char* what = jsc_value_to_string(value);
    const bool expands = g_strcmp0(what, "expand") == 0;
    g_free(what);
    gtk_widget_set_size_request(GTK_WIDGET(self->view_), expands ? 390 : 320, expands ? 600 : 50);
    gtk_widget_set_visible(self->close_, expands);
    const std::string size = expands ? "{width: 390.00, height: 600.00}" : "{width: 320.00, height: 50.00}";
    self->say("window.mraid.setPlacementType(\"inline\");");
    self->say("window.mraid.setCurrentPosition(" + size + ");");
    self->say("window.mraid.fireEvent(\"sizeChange\"," + size + ");");
    self->say("window.mraid.fireEvent(\"exposureChange\"," + size + ");");
    self->say(std::string("window.mraid.setState(\"") + (expands ? "expanded" : "default") + "\");");
  }

  GtkWindow* const window_;
  WebKitWebView* const view_;
  GtkWidget* const overlay_ = gtk_overlay_new();
  GtkWidget* const close_ = gtk_button_new_with_label("X");
};

using Evaluate = std::function<std::string(const std::string&)>;

// The samples, as the inside of a list.
std::string measure(int rounds, int commands, const Evaluate& evaluate) {
  const auto run = [&](int count) {
    evaluate("run(" + std::to_string(count) + ", " + std::to_string(commands) + ")");
  };
  run(50);
  runUntil([&] { return evaluate("String(done)") == "true"; });
  run(rounds);
  for (std::string done; done != "true";) {
    velto::bench::wait(100);
    done = evaluate("String(done)");
  }
  return evaluate("samples.map(function (s) { return s.toFixed(3); }).join(', ')");
}

}  // namespace

int main(int count, char** words) {
  constexpr int turnOf = 250;
  const int turns = count == 2 ? std::atoi(words[1]) / turnOf : 0;
  if (turns < 1) {
    std::fprintf(stderr, "usage: %s ROUNDS (250 or more)\n", words[0]);
    return 2;
  }
  if (!gtk_init_check()) {
    std::fprintf(stderr, "%s: no display\n", words[0]);
    return 1;
  }
  const LibraryPage page(libraryPage());
  const Bare bare;
  const Evaluate inLibrary = [&](const std::string& script) { return page.evaluate(script); };
  const Evaluate inBare = [&](const std::string& script) { return bare.evaluate(script); };
  std::string one, twenty, plain;
  for (int turn = 0; turn < turns; ++turn) {
    const char* comma = turn ? ", " : "";
    one += comma + measure(turnOf, 1, inLibrary);
    plain += comma + measure(turnOf, 1, inBare);
    twenty += comma + measure(turnOf, 20, inLibrary);
  }
  std::printf("{\"libraryMs\": [%s], \"twentyMs\": [%s], \"bareMs\": [%s]}\n", one.c_str(), twenty.c_str(),
              plain.c_str());
}
