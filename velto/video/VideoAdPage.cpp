// Pages of icons and companions.
#include "velto/video/VideoAdPage.h"

#include "velto/platform/Platform.h"
#include "velto/platform/UIApplication.h"
#include "velto/platform/foundation/Text.h"

#include <utility>

namespace velto {
namespace {

constexpr unsigned fillsThePage = UIViewAutoresizingFlexibleWidth | UIViewAutoresizingFlexibleHeight;

constexpr char failedAddress[] = "velto://failLoad";  // as the pages of banners say it

constexpr char pageHead[] =
    "<!DOCTYPE html><html><head><meta charset=\"utf-8\">"
    "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\"><style>"
    "html,body{margin:0;height:100%;overflow:hidden;background:transparent}"
    "img,iframe{display:block;border:0;width:100%;height:100%;object-fit:contain}a{display:block;height:100%}"
    "</style></head><body>";

std::string escapedForAttribute(const std::string& text) {
  std::string escaped;
  for (const char c : text) switch (c) {
      case '&':
        escaped += "&amp;";
        break;
      case '"':
        escaped += "&quot;";
        break;
      case '<':
        escaped += "&lt;";
        break;
      default:
        escaped += c;
    }
  return escaped;
}

// A picture is lightest, and what a frame shows is told of least.
const VASTResource* bestOf(const std::vector<VASTResource>& resources) {
  const VASTResource* best = nullptr;
  const auto rank = [](const VASTResource& resource) {
    switch (resource.kind) {
      case VASTResource::Kind::Static:
        return lowercased(resource.creativeType).starts_with("image/") ? 3 : 0;
      case VASTResource::Kind::HTML:
        return 2;
      case VASTResource::Kind::IFrame:
        return 1;
    }
    return 0;
  };
  for (const auto& resource : resources)
    if (!resource.content.empty() && rank(resource) > (best ? rank(*best) : 0)) best = &resource;
  return best;
}

std::string pageOf(const VASTResource& resource, const VideoAdPage::Content& content) {
  std::string inside;
  switch (resource.kind) {
    case VASTResource::Kind::Static:
      inside = "<img src=\"" + escapedForAttribute(resource.content) + "\" alt=\"" +
               escapedForAttribute(content.alternativeText) + "\" onerror=\"location='" + failedAddress +
               "'\">";
      if (!content.clickThrough.empty())
        inside = "<a href=\"" + escapedForAttribute(content.clickThrough) + "\">" + inside + "</a>";
      break;
    case VASTResource::Kind::HTML:
      inside = resource.content;
      break;
    case VASTResource::Kind::IFrame:
      inside =
          "<iframe sandbox=\"allow-scripts allow-same-origin allow-popups "
          "allow-top-navigation-by-user-activation\" src=\"" +
          escapedForAttribute(resource.content) + "\"></iframe>";
      break;
  }
  return pageHead + inside + "</body></html>";
}

}  // namespace

bool VideoAdPage::canShow(const VASTCompanion& companion) {
  return bestOf(companion.resources) != nullptr;
}

std::shared_ptr<VideoAdPage> VideoAdPage::make(const Content& content, CGSize size, Actions actions) {
  const auto* resource = bestOf(content.resources);
  if (!resource) return nullptr;
  std::shared_ptr<VideoAdPage> made(new VideoAdPage);
  made->actions_ = std::move(actions);
  WKWebViewConfiguration configuration;
  configuration.allowsInlineMediaPlayback = true;
  made->page_ = WKWebView::initWithFrame({{0, 0}, size}, std::move(configuration));
  made->page_->setBackgroundColor(UIColor::clearColor());
  ScrollBehavior scroll;
  scroll.bounces = false;
  scroll.scrollEnabled = false;
  made->page_->setScrollView(scroll);
  made->page_->setNavigationDelegate(std::weak_ptr<WKNavigationDelegate>(made));
  made->view()->setFrame({{0, 0}, size});
  made->page_->setAutoresizingMask(fillsThePage);
  made->view()->addSubview(made->page_);
  made->page_->loadHTMLString(pageOf(*resource, content), std::nullopt);
  return made;
}

void VideoAdPage::viewWillAppear(bool) {
  inWindow_ = true;
  look();
}

void VideoAdPage::viewWillDisappear(bool) {
  inWindow_ = false;
}

void VideoAdPage::look() {
  if (!inWindow_ || !loaded_ || std::exchange(told_, true)) return;
  if (actions_.shown) actions_.shown();
}

void VideoAdPage::webView(WKWebView&, const WKNavigationAction& action,
                          const DecisionHandler& decisionHandler) {
  const auto alive = shared_from_this();
  if (action.requestURL && action.requestURL->scheme() == "velto") {
    decisionHandler(WKNavigationActionPolicy::Cancel);
    return action.requestURL->absoluteString() == failedAddress ? fail() : void();
  }
  if (action.navigationType != WKNavigationType::LinkActivated || !action.requestURL)
    return decisionHandler(WKNavigationActionPolicy::Allow);
  const auto wanted = actions_.clicked ? actions_.clicked() : std::nullopt;
  const auto url = wanted ? NSURL::URLByEscaping(*wanted) : action.requestURL;
  auto& application = Platform::current().application();
  const bool opens = url && application.canOpenURL(*url);
  if (opens) application.openURL(*url, {}, nullptr);
  if (actions_.pressed) actions_.pressed(opens);
  decisionHandler(WKNavigationActionPolicy::Cancel);  // the page stays what it is
}

void VideoAdPage::webView(WKWebView&, const WKNavigation&) {
  loaded_ = true;
  look();
}

void VideoAdPage::webView(WKWebView&, const WKNavigation&, const NSError&) {
  fail();
}

// It stays empty, and was not shown.
void VideoAdPage::fail() {
  if (loaded_ && told_) return;
  loaded_ = false;
  told_ = true;
  if (const auto failed = std::exchange(actions_.failed, nullptr)) failed();
}

}  // namespace velto
