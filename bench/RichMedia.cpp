// A command's round trip: a page sends expand() or close(), the host makes the change, and the page hears of
// the new state, again and again. Measured in the page, by turns in a banner of the library and in a bare web
// view whose program does the same: it takes the message, gives the view its size, and evaluates as many
// statements.
//
//   usage: velto-bench-rich-media ROUNDS
//
// Prints {"libraryMs": [...], "bareMs": [...]}, milliseconds a round trip, one sample each ten of them.
#include "velto/ads/VeltoAd.h"
#include "velto/gtk/VeltoGtk.h"
#include "velto/platform/ui/WKWebView.h"
#include "velto/ui/VeltoBannerViewControllerPrivate.h"
#include "velto/velto.h"

#include <webkit/webkit.h>

#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

using namespace velto;

// Ten changes make a sample; the first is not counted.
constexpr char loop[] = R"(
  var samples = [], left = 0, began = 0;
  function go(state) {
    if (left % 10 === 0) {
      if (began) samples.push((performance.now() - began) / 10);
      began = performance.now();
    }
    if (left-- <= 0) { began = 0; done = true; return; }
    state === 'default' ? ask('expand') : ask('close');
  }
  var done = false;
  function run(rounds) { done = false; samples = []; left = rounds; go('default'); }
)";

std::string libraryPage() {
  return std::string("<html><head><script src=\"mraid.js\"></script></head><body>ad<script>") + loop +
         "function ask(what) { mraid[what](); }\n"
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

void runUntil(const std::function<bool()>& condition) {
  while (!condition()) g_main_context_iteration(nullptr, TRUE);
}

struct Host : VeltoBannerViewControllerDelegate {
  std::shared_ptr<UIViewController> controller;
  std::shared_ptr<UIViewController> presentViewController() override { return controller; }
};

// --- the bare program

struct Bare {
  GtkWindow* window = nullptr;
  WebKitWebView* view = nullptr;

  static void loaded(WebKitWebView*, WebKitLoadEvent event, bool* flag) {
    if (event == WEBKIT_LOAD_FINISHED) *flag = true;
  }
  void say(const std::string& statement) const {
    webkit_web_view_evaluate_javascript(view, statement.c_str(), -1, nullptr, nullptr, nullptr, nullptr,
                                        nullptr);
  }
  static void heard(WebKitUserContentManager*, JSCValue* value, Bare* self) {
    char* what = jsc_value_to_string(value);
    const bool expands = g_strcmp0(what, "expand") == 0;
    g_free(what);
    gtk_widget_set_size_request(GTK_WIDGET(self->view), expands ? 390 : 320, expands ? 600 : 50);
    const std::string size = expands ? "{width: 390.00, height: 600.00}" : "{width: 320.00, height: 50.00}";
    self->say("window.mraid.setPlacementType(\"inline\");");
    self->say("window.mraid.setCurrentPosition(" + size + ");");
    self->say("window.mraid.fireEvent(\"sizeChange\"," + size + ");");
    self->say("window.mraid.fireEvent(\"exposureChange\"," + size + ");");
    self->say(std::string("window.mraid.setState(\"") + (expands ? "expanded" : "default") + "\");");
  }
};

using Evaluate = std::function<std::string(const std::string&)>;

void measure(const char* name, int rounds, const Evaluate& evaluate) {
  evaluate("run(20)");
  runUntil([&] { return evaluate("String(done)") == "true"; });
  evaluate("run(" + std::to_string(rounds) + ")");
  for (std::string done; done != "true";) {
    const gint64 pause = g_get_monotonic_time() + 100'000;  // the question itself is work for the page
    const auto wake = [](gpointer) -> gboolean { return G_SOURCE_CONTINUE; };
    const guint timer = g_timeout_add(20, wake, nullptr);
    runUntil([&] { return g_get_monotonic_time() > pause; });
    g_source_remove(timer);
    done = evaluate("String(done)");
  }
  std::printf("\"%s\": [%s]", name,
              evaluate("samples.map(function (s) { return s.toFixed(3); }).join(', ')").c_str());
}

}  // namespace

int main(int count, char** words) {
  const int rounds = count == 2 ? std::atoi(words[1]) / 10 * 10 : 0;
  if (rounds < 10) {
    std::fprintf(stderr, "usage: %s ROUNDS\n", words[0]);
    return 2;
  }
  if (!gtk_init_check()) {
    std::fprintf(stderr, "%s: no display\n", words[0]);
    return 1;
  }
  std::printf("{");
  {
    gtk::install({.applicationIdentifier = "org.example.bench"});
    auto* window = GTK_WINDOW(gtk_window_new());
    gtk_window_set_default_size(window, 390, 600);
    auto host = std::make_shared<Host>();
    host->controller = gtk::hostViewController(window);
    gtk_window_present(window);
    auto banner =
        VeltoBannerViewController::initWithDelegate(host, VeltoBannerSize320x50, VeltoBannerPositionBottom);
    auto ad = VeltoAd::adWithHTML(libraryPage(), std::nullopt, nullptr);
    ad->size = {320, 50};
    banner->vc()->fetchBannerSuccess(ad);
    const auto evaluate = [&](const std::string& script) {
      std::optional<std::string> answer;
      banner->vc()->webView()->evaluateJavaScript(
          "String(" + script + ")",
          [&](const auto& value, const auto&) { answer = value && value->string() ? *value->string() : ""; });
      runUntil([&] { return answer.has_value(); });
      return *answer;
    };
    runUntil([&] { return evaluate("window.mraid ? mraid.getState() : ''") == "default"; });
    measure("libraryMs", rounds, evaluate);
    banner.reset();
    host->controller.reset();
    gtk_window_destroy(window);
    gtk::uninstall();
  }
  std::printf(", ");
  Bare bare;
  bare.window = GTK_WINDOW(gtk_window_new());
  gtk_window_set_default_size(bare.window, 390, 600);
  bare.view = WEBKIT_WEB_VIEW(webkit_web_view_new());
  auto* content = webkit_web_view_get_user_content_manager(bare.view);
  webkit_user_content_manager_register_script_message_handler(content, "bench", nullptr);
  g_signal_connect(content, "script-message-received::bench", G_CALLBACK(Bare::heard), &bare);
  gtk_widget_set_halign(GTK_WIDGET(bare.view), GTK_ALIGN_CENTER);
  gtk_widget_set_valign(GTK_WIDGET(bare.view), GTK_ALIGN_END);
  gtk_widget_set_size_request(GTK_WIDGET(bare.view), 320, 50);
  gtk_window_set_child(bare.window, GTK_WIDGET(bare.view));
  bool loaded = false;
  g_signal_connect(bare.view, "load-changed", G_CALLBACK(Bare::loaded), &loaded);
  gtk_window_present(bare.window);
  webkit_web_view_load_html(bare.view, barePage().c_str(), nullptr);
  runUntil([&] { return loaded; });
  measure("bareMs", rounds, [&](const std::string& script) {
    struct Answer {
      bool came = false;
      std::string text;
    } answer;
    const auto finish = +[](GObject* view, GAsyncResult* result, gpointer data) {
      auto& into = *static_cast<Answer*>(data);
      into.came = true;
      if (auto* value = webkit_web_view_evaluate_javascript_finish(WEBKIT_WEB_VIEW(view), result, nullptr)) {
        char* text = jsc_value_to_string(value);
        into.text = text;
        g_free(text);
        g_object_unref(value);
      }
    };
    webkit_web_view_evaluate_javascript(bare.view, ("String(" + script + ")").c_str(), -1, nullptr, nullptr,
                                        nullptr, finish, &answer);
    runUntil([&] { return answer.came; });
    return answer.text;
  });
  std::printf("}\n");
  gtk_window_destroy(bare.window);
}
