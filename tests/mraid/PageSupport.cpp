// See PageTest.h.
#include <cmath>

#include "PageTest.h"

// clang-format off: the X headers define words like Success as macros, so they come last
#include <gdk/x11/gdkx.h>
// clang-format on

namespace velto::test {

demo::LinkTrap& PageTest::trap() {
  static demo::LinkTrap made;  // before anything asks for the applications of this desktop
  return made;
}

PageTest::PageTest() {
  trap();
  gtk_init();
  gtk::install({.applicationIdentifier = "org.example.pages",
                .refusedToOpen = [this](const auto& address) { refused.push_back(address); },
                .mayAddCalendarEvents = true});
  VeltoFramework::addVeltoKey("key");
  window = GTK_WINDOW(gtk_window_new());
  gtk_window_set_decorated(window, false);
  gtk_window_set_default_size(window, 400, 600);
  gtk_window_set_child(window, gtk_label_new("content"));
  host = gtk::hostViewController(window);
  gtk_window_present(window);
  EXPECT_TRUE(runUntil([&] { return host->view()->bounds().size == CGSize{400, 600}; }));
  banner = VeltoBannerViewControllerPrivate::initWithDelegate(
      std::shared_ptr<VeltoBannerViewControllerDelegate>(std::shared_ptr<void>(), this),
      VeltoBannerSize320x50, VeltoBannerPositionTop, {}, nullptr);
}

PageTest::~PageTest() {
  banner->removeBanner();
  runUntil([&] { return host->view()->subviews().empty(); });
  banner.reset();
  host.reset();
  gtk::uninstall();
  gtk_window_destroy(window);
}

std::shared_ptr<VeltoAd> PageTest::ad(const std::string& body, int width, int height) {
  NSURLResponse response{"https://ads.example/", true, 200, {}};
  response.allHeaderFields.set("x-content", "html");
  response.allHeaderFields.set("x-width", std::to_string(width));
  response.allHeaderFields.set("x-height", std::to_string(height));
  return VeltoAd::adWithHTML("<html><head></head><body>" + body + "</body></html>", VeltoBannerSize320x50,
                             VeltoTaskResponseHeaders::headersFor(response));
}

void PageTest::show(const std::string& body, const std::string& before) {
  banner->fetchBannerSuccess(ad(logging + body));
  if (!before.empty()) web()->addUserScript({before, WKUserScriptInjectionTime::AtDocumentStart, true});
  ASSERT_TRUE(holds("typeof mraid === 'object' && mraid.getState() !== 'loading'"));
}

bool PageTest::runUntil(const std::function<bool()>& condition) {
  bool expired = false;
  const auto expire = [](gpointer flag) -> gboolean { return *static_cast<bool*>(flag) = true; };
  const guint deadline = g_timeout_add_seconds(10, expire, &expired);
  while (!condition() && !expired) g_main_context_iteration(nullptr, TRUE);
  if (!expired) g_source_remove(deadline);
  return condition();
}

JSON PageTest::value(const std::string& expression, std::shared_ptr<WKWebView> page) {
  std::optional<JSON> result;
  bool answered = false;
  (page ? page : web())->evaluateJavaScript(expression, [&](const auto& found, const auto&) {
    result = found;
    answered = true;
  });
  while (!answered) g_main_context_iteration(nullptr, TRUE);
  return result.value_or(JSON());
}

std::string PageTest::text(const std::string& expression, std::shared_ptr<WKWebView> page) {
  const JSON found = value(expression, std::move(page));
  return found.string() ? *found.string() : "(no text)";
}

void PageTest::tap(CGPoint point) {
  auto* surface = gtk_native_get_surface(GTK_NATIVE(window));
  const auto line = "xdotool mousemove --window " + std::to_string(gdk_x11_surface_get_xid(surface)) + " " +
                    std::to_string(std::lround(point.x)) + " " + std::to_string(std::lround(point.y)) +
                    " click 1";
  ASSERT_TRUE(g_spawn_command_line_async(line.c_str(), nullptr)) << line;
}

std::shared_ptr<WKWebView> PageTest::secondWeb() {
  for (const auto& view : banner->view()->subviews())
    if (auto page = std::dynamic_pointer_cast<WKWebView>(view); page && page != web()) return page;
  return nullptr;
}

}  // namespace velto::test
