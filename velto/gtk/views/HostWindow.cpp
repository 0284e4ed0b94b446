// The host window: an overlay between a window and its content, with the library's root view on top.
#include "velto/gtk/views/HostWindow.h"

#include "velto/gtk/GtkPlatform.h"
#include "velto/gtk/GtkVersions.h"
#include "velto/gtk/ProcessNames.h"
#include "velto/gtk/VeltoGtk.h"
#include "velto/gtk/views/AdSlot.h"
#include "velto/gtk/views/Peer.h"
#include "velto/gtk/views/ScreenPart.h"
#include "velto/gtk/views/WindowContent.h"
#include "velto/platform/ui/UIViewControllerTransitioning.h"
#include "velto/platform/ui/ViewChanges.h"

#include <algorithm>
#include <stdexcept>

namespace velto::gtk {
namespace {

GQuark windowKey() {
  static const GQuark key = ownKey("velto-host-window");
  return key;
}
constexpr gint64 longestTurn = G_USEC_PER_SEC;

// A window that takes another size, with what is to run once everything in it has its new frame.
class SizeChange final : public UIViewControllerTransitionCoordinator {
 public:
  void animateAlongsideTransition(std::function<void()> animation) override {
    animations_.push_back(std::move(animation));
  }
  void run() const {
    for (const auto& animation : animations_) animation();
  }

 private:
  std::vector<std::function<void()>> animations_;
};

CGSize sizeOf(GtkWidget* widget) {
  return {static_cast<double>(gtk_widget_get_width(widget)),
          static_cast<double>(gtk_widget_get_height(widget))};
}

// The overlay gives the root view's widget its place: always all of the content.
class RootPeer final : public Peer {
 public:
  explicit RootPeer(GtkWidget* overlay) : overlay_(GPtr<GtkWidget>::retain(overlay)) {
    markView(widget());
    gtk_overlay_add_overlay(GTK_OVERLAY(overlay_.get()), widget());
  }
  ~RootPeer() override { gtk_overlay_remove_overlay(GTK_OVERLAY(overlay_.get()), widget()); }

  void setFrame(const CGRect&) override {}
  WindowSight windowSight() const override {
    auto* window = gtk_widget_get_root(widget());
    const auto* host = GTK_IS_WINDOW(window) ? HostWindow::of(GTK_WINDOW(window)) : nullptr;
    return host ? host->sight(widget(), {}) : WindowSight{};
  }
  // A slot's view lies in its slot.
  void insertSubview(ViewPeer& child, ViewPeer* front) override {
    const auto* slot = dynamic_cast<SlotPeer*>(&child);
    if (!slot || slot->isOutside()) Peer::insertSubview(child, front);
  }

 private:
  GPtr<GtkWidget> overlay_;
};

}  // namespace

HostWindow* HostWindow::of(GtkWindow* window) {
  return static_cast<HostWindow*>(g_object_get_qdata(G_OBJECT(window), windowKey()));
}

HostWindow& HostWindow::make(GtkWindow* window) {
  if (gtk_widget_in_destruction(GTK_WIDGET(window)))
    throw std::invalid_argument("hostViewController: the window is being destroyed");
  std::unique_ptr<HostWindow> host(new HostWindow(window));
  if (windowContent(window) != host->overlay_)
    throw std::invalid_argument(
        std::string("hostViewController: a ") + G_OBJECT_TYPE_NAME(window) +
        " keeps its content to itself; give another window, such as the one it is over");
  g_object_set_qdata(G_OBJECT(window), windowKey(), host.get());
  if (gtk_widget_get_mapped(GTK_WIDGET(window)))
    mapped(nullptr, host.get());  // once it is found among the windows
  return *host.release();         // deleted by destroyed()
}

GtkWidget* HostWindow::mappedWidget() {
  GListModel* windows = gtk_window_get_toplevels();
  for (guint i = 0; i < g_list_model_get_n_items(windows); ++i) {
    const auto window = GPtr<GtkWindow>::adopt(GTK_WINDOW(g_list_model_get_item(windows, i)));
    if (of(window) && gtk_widget_get_mapped(GTK_WIDGET(window.get()))) return GTK_WIDGET(window.get());
  }
  return nullptr;
}

void HostWindow::turnAll(UIDeviceOrientation orientation, bool onItsSide) {
  GListModel* windows = gtk_window_get_toplevels();
  for (guint i = 0; i < g_list_model_get_n_items(windows); ++i) {
    const auto window = GPtr<GtkWindow>::adopt(GTK_WINDOW(g_list_model_get_item(windows, i)));
    auto* host = of(window);
    if (!host) continue;
    const auto presented = host->controller_->presentedViewController();
    if (!presented || presented->supportedInterfaceOrientations() >> orientation & 1) host->turn(onItsSide);
  }
}

// The content changes places of width and height; the frame around it stays as thick as it is.
void HostWindow::turn(bool onItsSide) {
  const bool fixed = !gtk_window_get_resizable(window_) || gtk_window_is_maximized(window_) ||
                     gtk_window_is_fullscreen(window_);
  if (fixed || !gtk_widget_get_mapped(GTK_WIDGET(window_))) return;
  const bool turning = isTurning();
  const auto [width, height] = turning ? turned_->to : sizeOf(overlay_);
  if (onItsSide ? width >= height : height >= width) return;
  const CGSize window = turning ? turned_->window : defaultSize();
  const CGSize turned{window.width - width + height, window.height - height + width};
  turned_ = {{height, width}, turned, g_get_monotonic_time()};
  takeTurnedSize();
}

void HostWindow::takeTurnedSize() {
  const auto [width, height] = turned_->window;
  gtk_window_set_default_size(window_, static_cast<int>(width), static_cast<int>(height));
}

CGSize HostWindow::defaultSize() const {
  int width = -1, height = -1;
  gtk_window_get_default_size(window_, &width, &height);
  const CGSize now = sizeOf(GTK_WIDGET(window_));
  return {width > 0 ? width : now.width, height > 0 ? height : now.height};
}

// A window takes its size some frames after it was told to; until then a turn counts as made.
bool HostWindow::isTurning() const {
  return turned_ && g_get_monotonic_time() - turned_->began < longestTurn;
}

// A size that was still on its way when the window was turned back takes the place of what that asked for.
void HostWindow::followTurn(CGSize now) {
  if (isTurning() && now != turned_->to)
    takeTurnedSize();
  else
    turned_.reset();
}

std::optional<bool> HostWindow::isUpright() {
  auto* window = mappedWidget();
  if (!window) return std::nullopt;
  const auto* host = of(GTK_WINDOW(window));
  const CGSize size = host->isTurning() ? host->turned_->window : sizeOf(window);
  return size.height >= size.width;
}

HostWindow::HostWindow(GtkWindow* window)
    : window_(window), overlay_(GPtr<GtkWidget>::sink(gtk_overlay_new())) {
  auto peer = std::make_unique<RootPeer>(overlay_);
  root_ = peer->widget();
  controller_ = std::make_shared<UIViewController>(UIView::makeWithPeer(std::move(peer)));
  g_signal_connect(window_, "destroy", G_CALLBACK(destroyed), this);
  const std::string changed = std::string("notify::") + contentProperty(window_);
  g_signal_connect(window_, changed.c_str(), G_CALLBACK(contentChanged), this);
  g_signal_connect_after(window_, "realize", G_CALLBACK(realized), this);
  g_signal_connect(window_, "unrealize", G_CALLBACK(unrealized), this);
  g_signal_connect_after(window_, "map", G_CALLBACK(mapped), this);
  g_signal_connect(window_, "unmap", G_CALLBACK(unmapped), this);
  g_signal_connect(window_, "notify::is-active", G_CALLBACK(focusChanged), this);
  insertOverlay();
  if (gtk_widget_get_realized(GTK_WIDGET(window_))) realized(nullptr, this);
}

HostWindow::~HostWindow() {
  g_signal_handlers_disconnect_by_data(window_, this);
  unrealized(nullptr, this);
  controller_->view()->platformSetInWindow(false);
  controller_->platformWindowGone();
  hostViews_.clear();
  while (!slots_.empty()) slots_.back()->windowGone();
  // Others may still hold the controller, and with it the overlay; the application's content they may not.
  gtk_overlay_set_child(GTK_OVERLAY(overlay_.get()), nullptr);
}

void HostWindow::destroyed(GtkWidget* window, HostWindow* self) noexcept {
  g_object_set_qdata(G_OBJECT(window), windowKey(), nullptr);
  delete self;
  tellVisibility();
}

// --- the overlay ---------------------------------------------------------------------------------------

// Nothing of the application's may see its content leave: the focus comes back, and a window that cannot be
// wrapped gets its content again.
void HostWindow::insertOverlay() {
  inserting_ = true;
  g_object_freeze_notify(G_OBJECT(window_));
  // Another copy of the library had wrapped it, with content that is not the window's any more.
  if (auto* other = gtk_widget_get_parent(overlay_); GTK_IS_OVERLAY(other))
    gtk_overlay_set_child(GTK_OVERLAY(other), nullptr);
  const auto content = GPtr<GtkWidget>::retain(windowContent(window_));
  const auto focus = GPtr<GtkWidget>::retain(gtk_window_get_focus(window_));
  setWindowContent(window_, nullptr);
  const bool isFree = !content || !gtk_widget_get_parent(content);
  if (isFree) gtk_overlay_set_child(GTK_OVERLAY(overlay_.get()), content);
  if (isFree) setWindowContent(window_, overlay_);
  if (isFree && windowContent(window_) != overlay_) {
    gtk_overlay_set_child(GTK_OVERLAY(overlay_.get()), nullptr);
    setWindowContent(window_, content);
  }
  if (focus && gtk_widget_get_root(focus) == GTK_ROOT(window_)) gtk_window_set_focus(window_, focus);
  g_object_thaw_notify(G_OBJECT(window_));
  inserting_ = false;
}

// The application may give its window other content at any time, and need not know of the overlay. Another copy of the library
// may wrap it as well, which leaves it in the window.
void HostWindow::contentChanged(GtkWindow* window, GParamSpec*, HostWindow* self) noexcept {
  if (!self->inserting_ && !gtk_widget_is_ancestor(self->overlay_, GTK_WIDGET(window))) self->insertOverlay();
}

// --- on the screen -------------------------------------------------------------------------------------

void HostWindow::mapped(GtkWidget*, HostWindow* self) noexcept {
  auto* window = GTK_WIDGET(self->window_);
  if (!x11WindowOf(window)) self->frames_.emplace(window, sightChanged);
  self->controller_->view()->platformSetInWindow(true);
  tellVisibility();
}

void HostWindow::unmapped(GtkWidget*, HostWindow* self) noexcept {
  self->frames_.reset();
  self->controller_->view()->platformSetInWindow(false);
  self->nodes_.reset();  // what was painted is not what will be seen when it comes back
  tellVisibility();
}

void HostWindow::stateChanged(GdkSurface*, GParamSpec*, HostWindow*) noexcept {
  sightChanged();
}

void HostWindow::sightChanged() {
  tellVisibility();
  ViewChanges::note();
}

// The attention goes from one window of the application to another by way of none.
void HostWindow::focusChanged(GtkWindow* window, GParamSpec*, HostWindow* self) noexcept {
  hasFocus();
  // With the focus the window may have gone from the screen: its next frame tells.
  if (self->frames_ && !gtk_window_is_active(window))
    gdk_surface_queue_render(gtk_native_get_surface(GTK_NATIVE(window)));
  ViewChanges::note();
}

// Where windows get no focus at all (a display without window manager) nobody has taken it away.
bool HostWindow::hasFocus() {
  static bool hadFocus = false;
  GListModel* windows = gtk_window_get_toplevels();
  for (guint i = 0; i < g_list_model_get_n_items(windows); ++i) {
    const auto window = GPtr<GtkWindow>::adopt(GTK_WINDOW(g_list_model_get_item(windows, i)));
    if (gtk_window_is_active(window)) return hadFocus = true;
  }
  return !hadFocus;
}

// As on a phone: whatever else has the attention is all that is seen then. Beside other windows, or on a second
// screen, this one is in sight without it.
bool HostWindow::fillsScreen() const {
  if (!gtk_widget_get_mapped(GTK_WIDGET(window_))) return false;
  GListModel* monitors = gdk_display_get_monitors(gtk_widget_get_display(GTK_WIDGET(window_)));
  if (g_list_model_get_n_items(monitors) != 1) return false;
  const auto monitor = GPtr<GdkMonitor>::adopt(GDK_MONITOR(g_list_model_get_item(monitors, 0)));
  GdkRectangle screen{};
  gdk_monitor_get_geometry(monitor, &screen);
  auto* window = GTK_WIDGET(window_);
  return gtk_window_is_maximized(window_) || gtk_window_is_fullscreen(window_) ||
         (gtk_widget_get_width(window) >= screen.width && gtk_widget_get_height(window) >= screen.height);
}

WindowSight HostWindow::sight(GtkWidget* widget, CGPoint origin) const {
  const auto moved = [&](CGRect rect) {
    return CGRect{{rect.origin.x + origin.x, rect.origin.y + origin.y}, rect.size};
  };
  const Painted painted = paintedOver(widget, nodes_.get());
  WindowSight sight;
  sight.minimized = !isVisible();
  sight.focused = hasFocus() || !fillsScreen();
  sight.measurable = painted.measurable;
  if (painted.found) sight.onScreen = moved(painted.window);
  sight.painted = painted.found || widget == root_;
  if (painted.clip && widget != root_) sight.clip = moved(*painted.clip);
  for (const auto& cover : painted.covers) sight.covers.push_back(moved(cover));
  return sight;
}

void HostWindow::tellVisibility() {
  auto* platform = GtkPlatform::installed();
  if (!platform) return;
  bool visible = false;
  GListModel* windows = gtk_window_get_toplevels();
  for (guint i = 0; i < g_list_model_get_n_items(windows) && !visible; ++i) {
    const auto window = GPtr<GtkWindow>::adopt(GTK_WINDOW(g_list_model_get_item(windows, i)));
    const auto* host = of(window);
    visible = host && host->isVisible();
  }
  platform->foreground().setWindowsVisible(visible);
}

bool HostWindow::isVisible() const {
  if (!gtk_widget_get_mapped(GTK_WIDGET(window_))) return false;
  auto* surface = gtk_native_get_surface(GTK_NATIVE(window_));
  if ((frames_ && frames_->isStalled()) || isOnOtherWorkspace(surface)) return false;
  return !(gdk_toplevel_get_state(GDK_TOPLEVEL(surface)) & outOfSightStates);
}

void HostWindow::realized(GtkWidget*, HostWindow* self) noexcept {
  self->clock_ = GPtr<GdkFrameClock>::retain(gtk_widget_get_frame_clock(GTK_WIDGET(self->window_)));
  g_signal_connect_after(self->clock_, "layout", G_CALLBACK(laidOut), self);
  g_signal_connect(self->clock_, "after-paint", G_CALLBACK(painted), self);
  self->stateChanged_ = Signal(gtk_native_get_surface(GTK_NATIVE(self->window_)), "notify::state",
                               G_CALLBACK(stateChanged), self);
  self->moved_ = watchMoves(gtk_native_get_surface(GTK_NATIVE(self->window_)), sightChanged);
}

void HostWindow::unrealized(GtkWidget*, HostWindow* self) noexcept {
  if (!self->clock_) return;
  self->stateChanged_ = Signal();
  self->moved_ = Signal();
  self->nodes_.reset();
  g_signal_handlers_disconnect_by_data(self->clock_, self);
  self->clock_.reset();
}

// After the toolkit has laid the window out and before it paints: what changes here is laid out in the same
// frame, since the frame clock repeats the phase while there is something left to do. A window in which
// nothing moves has no such phases.
void HostWindow::laidOut(GdkFrameClock*, HostWindow* self) noexcept {
  self->followWidgets();
}

void HostWindow::painted(GdkFrameClock*, HostWindow* self) noexcept {
  const bool isEmpty = self->controller_->view()->subviews().empty();
  self->nodes_ = isEmpty ? nullptr : paintedNodes(GTK_WIDGET(self->window_));
  if (!isEmpty && self->frames_) self->frames_->painted();
  ViewChanges::note();
}

void HostWindow::followWidgets() {
  const auto controller = controller_;  // a delegate that hears of this may do anything
  const double width = gtk_widget_get_width(overlay_);
  const double height = gtk_widget_get_height(overlay_);
  const CGSize before = controller->view()->frame().size;
  const CGSize after{width, height};
  const bool changes = before != after && before.width > 0 && width > 0;
  SizeChange change;
  if (changes) controller->viewWillTransitionToSize(after, change);
  controller->view()->setFrame({{0, 0}, after});
  for (const auto& hostView : hostViews_) hostView->follow();
  const auto slots = slots_;
  const ViewChanges::AsOne together;  // a list that scrolls moves all of them
  for (auto* slot : slots)
    if (std::find(slots_.begin(), slots_.end(), slot) != slots_.end()) slot->follow();
  if (!changes) return;
  followTurn(after);
  controller->view()->layoutIfNeeded();
  change.run();
}

// --- host views ----------------------------------------------------------------------------------------

std::shared_ptr<UIView> HostWindow::viewOf(GtkWidget* widget) {
  for (const auto& hostView : hostViews_)
    if (hostView->widget() == widget) return hostView->view();
  auto& made = *hostViews_.emplace_back(
      std::make_unique<HostView>(widget, overlay_, [this, widget] { forget(widget); }));
  controller_->view()->addSubview(made.view());
  made.follow();
  return made.view();
}

void HostWindow::forget(GtkWidget* widget) {
  std::erase_if(hostViews_, [&](const auto& hostView) { return hostView->widget() == widget; });
}

// --- for applications ----------------------------------------------------------------------------------

std::shared_ptr<UIViewController> hostViewController(GtkWindow* window) {
  if (!GTK_IS_WINDOW(window)) throw std::invalid_argument("hostViewController: not a window");
  auto* host = HostWindow::of(window);
  return (host ? *host : HostWindow::make(window)).controller();
}

std::shared_ptr<UIViewController> hostViewController(GtkWidget* widget) {
  if (GTK_IS_WINDOW(widget)) return hostViewController(GTK_WINDOW(widget));
  auto* slot = GTK_IS_WIDGET(widget) ? AdSlot::of(widget) : nullptr;
  if (!slot) throw std::invalid_argument("hostViewController: neither a window nor an ad slot");
  slot->joinNow();
  return slot->controller();
}

std::shared_ptr<UIView> hostView(GtkWidget* widget) {
  if (GTK_IS_WIDGET(widget) && AdSlot::of(widget)) return hostViewController(widget)->view();
  auto* root = GTK_IS_WIDGET(widget) ? gtk_widget_get_root(widget) : nullptr;
  auto* host = GTK_IS_WINDOW(root) ? HostWindow::of(GTK_WINDOW(root)) : nullptr;
  if (!host) throw std::invalid_argument("hostView: not a widget of a window with a host view controller");
  return host->viewOf(widget);
}

}  // namespace velto::gtk
