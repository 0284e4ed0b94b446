// The window: a root view, and touches that find their way down from it.
#include "velto/headless/views/HostWindow.h"

#include <algorithm>
#include <stdexcept>

namespace velto::headless {
namespace {

constexpr double leastTouchableAlpha = 0.01;

struct Touched {
  std::shared_ptr<UIView> view;
  CGPoint point;  // own coordinates
};

// The views under the point, outermost first.
std::vector<Touched> viewsUnder(const std::shared_ptr<UIView>& root, CGPoint point) {
  std::vector<Touched> path{{root, point}};
  for (bool found = true; found;) {
    found = false;
    const auto subviews = path.back().view->subviews();
    for (auto child = subviews.rbegin(); child != subviews.rend() && !found; ++child) {
      const auto& frame = (*child)->frame();
      if ((*child)->isHidden() || (*child)->alpha() < leastTouchableAlpha ||
          !frame.contains(path.back().point))
        continue;
      const CGPoint inside{path.back().point.x - frame.origin.x, path.back().point.y - frame.origin.y};
      path.push_back({*child, inside});
      found = true;
    }
  }
  return path;
}

}  // namespace

HostWindow::HostWindow(CGSize size, UIEdgeInsets safeAreaInsets)
    : controller_(std::make_shared<UIViewController>(UIView::make())) {
  setSafeAreaInsets(safeAreaInsets);
  resize(size);
  show();
}

HostWindow::~HostWindow() {
  hide();
  controller_->platformWindowGone();
}

void HostWindow::show() {
  view().platformSetInWindow(true);
}
void HostWindow::hide() {
  view().platformSetInWindow(false);
}
void HostWindow::resize(CGSize size) {
  view().setFrame({{0, 0}, size});
}
void HostWindow::setSafeAreaInsets(UIEdgeInsets insets) {
  view().platformSetSafeAreaInsets(insets);
}

void HostWindow::setSight(WindowSight sight) {
  RecordingViewPeer::of(view()).setWindowSight(std::move(sight));
}

void HostWindow::tap(CGPoint point) {
  if (!view().isInWindow() || !view().bounds().contains(point)) return;
  const auto path = viewsUnder(controller_->view(), point);
  for (const auto& touched : path)
    if (auto* page = dynamic_cast<RecordingWebView*>(&touched.view->peer())) page->touch();
  if (path.back().view->isControl()) return path.back().view->peerTapped(path.back().point);
  for (auto touched = path.rbegin(); touched != path.rend(); ++touched)
    if (RecordingViewPeer::of(*touched->view).isTouchable()) touched->view->peerTapped(touched->point);
}

UIView* HostWindow::topmostModal() const {
  if (!view().isInWindow()) return nullptr;
  const auto& subviews = view().subviews();
  const auto modal = std::find_if(subviews.rbegin(), subviews.rend(), [](const auto& subview) {
    return RecordingViewPeer::of(*subview).isModal();
  });
  return modal == subviews.rend() ? nullptr : modal->get();
}

bool HostWindow::pressEscape() {
  auto* modal = topmostModal();
  if (!modal) return false;
  const auto alive = modal->shared_from_this();
  modal->peerEscaped();
  return true;
}

bool HostWindow::pressKey(UIKey key) {
  auto* modal = topmostModal();
  if (!modal) return false;
  const auto alive = modal->shared_from_this();
  return modal->peerKeyPressed(key);
}

WKNavigationActionPolicy HostWindow::tapLink(RecordingWebView& webView, const std::string& url) {
  const auto shown = webView.webView().shared_from_this();
  const auto root = controller_->view();  // the tap may end the window
  if (!shown->isDescendantOfView(view()))
    throw std::logic_error("velto::headless: the web view is not in the window");
  const CGRect bounds = shown->bounds();
  tap(view().convertPointFromView({bounds.midX(), bounds.midY()}, *shown));
  if (!shown->isDescendantOfView(*root)) return WKNavigationActionPolicy::Cancel;
  return webView.navigate(url, WKNavigationType::LinkActivated);
}

}  // namespace velto::headless
