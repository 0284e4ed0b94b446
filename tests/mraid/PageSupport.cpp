// See PageTest.h.
#include "PageTest.h"

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
  window = newWindow(400, 600, gtk_label_new("content"));
  host = present(window);
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

std::shared_ptr<WKWebView> PageTest::secondWeb() {
  for (const auto& view : banner->view()->subviews())
    if (auto page = std::dynamic_pointer_cast<WKWebView>(view); page && page != web()) return page;
  return nullptr;
}

}  // namespace velto::test
