// The slot: a widget class that asks for its ad's size, and who decides where the ad is.
#include "velto/gtk/views/AdSlot.h"

#include "velto/gtk/ProcessNames.h"
#include "velto/gtk/Translations.h"
#include "velto/gtk/views/HostWindow.h"
#include "velto/platform/ui/ViewChanges.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace velto::gtk {
namespace {

GtkWidgetClass* slotParentClass = nullptr;

}  // namespace

struct AdSlot::Widget {
  GtkWidget parent;
  AdSlot* slot;
};

// After each layout it looks at what its ad wants.
class AdSlot::View final : public UIView {
 public:
  View(AdSlot* slot, std::unique_ptr<SlotPeer> peer) : UIView(std::move(peer)), slot_(slot) {}
  void forget() { slot_ = nullptr; }
  void layoutSubviews() override {
    if (slot_) slot_->contentChanged();
  }
  CGRect fullScreenFrame() const override {
    return slot_ && slot_->host_ ? slot_->host_->controller()->view()->safeAreaFrame() : safeAreaFrame();
  }

 private:
  AdSlot* slot_;
};

// --- the peer ------------------------------------------------------------------------------------------

// In the slot it fills it; the place of the slot in the window is the toolkit's matter.
void SlotPeer::setFrame(const CGRect& frame) {
  if (outside_) Peer::setFrame(frame);
}

void SlotPeer::removeFromSuperview() {
  if (outside_) Peer::removeFromSuperview();
}

WindowSight SlotPeer::windowSight() const {
  return slot_->host_ ? slot_->host_->sight(widget(), slot_->view_->frame().origin) : WindowSight{};
}

// --- the widget ----------------------------------------------------------------------------------------

GType AdSlot::widgetType() {
  static const GType type = registerOwnType(GTK_TYPE_WIDGET, "VeltoAdSlot", sizeof(GtkWidgetClass), classInit,
                                            sizeof(Widget), nullptr);
  return type;
}

void AdSlot::classInit(gpointer klass, gpointer) noexcept {
  slotParentClass = GTK_WIDGET_CLASS(g_type_class_peek_parent(klass));
  G_OBJECT_CLASS(klass)->dispose = dispose;
  auto* widget = GTK_WIDGET_CLASS(klass);
  widget->measure = measure;
  widget->get_request_mode = requestMode;
  widget->size_allocate = allocate;
  gtk_widget_class_set_css_name(widget, "velto-slot");
  gtk_widget_class_set_accessible_role(widget, GTK_ACCESSIBLE_ROLE_GROUP);
}

AdSlot* AdSlot::of(GtkWidget* widget) {
  return G_TYPE_CHECK_INSTANCE_TYPE(widget, widgetType()) ? reinterpret_cast<Widget*>(widget)->slot : nullptr;
}

GtkWidget* AdSlot::make(const SlotOptions& options) {
  auto* widget = GTK_WIDGET(g_object_new(widgetType(), "overflow", GTK_OVERFLOW_HIDDEN, nullptr));
  reinterpret_cast<Widget*>(widget)->slot = new AdSlot(widget, options);
  gtk_accessible_update_property(GTK_ACCESSIBLE(widget), GTK_ACCESSIBLE_PROPERTY_LABEL,
                                 translated("Advertisement"), -1);
  return widget;
}

void AdSlot::dispose(GObject* object) noexcept {
  delete std::exchange(reinterpret_cast<Widget*>(object)->slot, nullptr);
  G_OBJECT_CLASS(slotParentClass)->dispose(object);
}

void AdSlot::measure(GtkWidget* widget, GtkOrientation orientation, int forSize, int* minimum, int* natural,
                     int*, int*) noexcept {
  *minimum = *natural = 0;
  const AdSlot* self = of(widget);
  if (!self) return;
  const CGSize room = self->room_.asked(self->options_.room);
  if (orientation == GTK_ORIENTATION_HORIZONTAL) {
    *natural = static_cast<int>(std::ceil(room.width));
    *minimum = static_cast<int>(std::ceil(room.width * AdRoom::leastScale));
  } else {
    *natural = static_cast<int>(std::ceil(room.height * self->room_.scaleIn(forSize)));
    // Newer toolkits warn of a window that is lower than the least height without a width.
    *minimum = static_cast<int>(std::ceil(room.height * self->room_.leastScaleIn(forSize)));
  }
}

GtkSizeRequestMode AdSlot::requestMode(GtkWidget*) noexcept {
  return GTK_SIZE_REQUEST_HEIGHT_FOR_WIDTH;
}

void AdSlot::allocate(GtkWidget* widget, int width, int height, int) noexcept {
  const AdSlot* self = of(widget);
  auto* child = gtk_widget_get_first_child(widget);
  if (!self || !child) return;
  int least = 0;  // the toolkit wants to be asked first
  gtk_widget_measure(child, GTK_ORIENTATION_HORIZONTAL, -1, &least, nullptr, nullptr, nullptr);
  const double scale = self->room_.scaleIn(width);
  auto* transform = scale < 1 ? gsk_transform_scale(nullptr, float(scale), float(scale)) : nullptr;
  gtk_widget_allocate(child, int(std::lround(width / scale)), int(std::lround(height / scale)), -1,
                      transform);
}

// --- in a window ---------------------------------------------------------------------------------------

AdSlot::AdSlot(GtkWidget* widget, const SlotOptions& options) : widget_(widget), options_(options) {
  auto peer = std::make_unique<SlotPeer>(this);
  peer_ = peer.get();
  view_ = std::make_shared<View>(this, std::move(peer));
  controller_ = std::make_shared<UIViewController>(view_);
  markView(peer_->widget());
  gtk_widget_set_parent(peer_->widget(), widget_);
  g_signal_connect(widget_, "notify::root", G_CALLBACK(rootChanged), this);
  g_signal_connect(widget_, "notify::visible", G_CALLBACK(visibleChanged), this);
  visibleChanged(nullptr, nullptr, this);
}

AdSlot::~AdSlot() {
  g_signal_handlers_disconnect_by_data(widget_, this);
  if (joining_) g_source_remove(joining_);
  if (gtk_widget_get_parent(peer_->widget())) gtk_widget_unparent(peer_->widget());
  peer_->outside_ = false;
  leave();
  view_->forget();
  peer_->slot_ = nullptr;
}

// In the middle of such a change nothing can be put between a window and its content; and a slot that only
// moves to another parent stays what it is.
void AdSlot::rootChanged(GtkWidget*, GParamSpec*, AdSlot* self) noexcept {
  if (!self->joining_) self->joining_ = g_idle_add_full(G_PRIORITY_HIGH, joinLater, self, nullptr);
}

gboolean AdSlot::joinLater(gpointer data) noexcept {
  auto& self = *static_cast<AdSlot*>(data);
  self.joining_ = 0;
  try {
    self.join(true);
  } catch (const std::invalid_argument& error) {
    g_warning("an ad slot stays empty: %s", error.what());
  }
  return G_SOURCE_REMOVE;
}

// A window on the screen may be in the middle of its layout, as it is when a list makes a row.
void AdSlot::joinNow() {
  auto* root = gtk_widget_get_root(widget_);
  join(!root || !gtk_widget_get_realized(GTK_WIDGET(root)));
}

void AdSlot::join(bool wraps) {
  auto* root = gtk_widget_get_root(widget_);
  HostWindow* host = nullptr;
  if (GTK_IS_WINDOW(root)) {
    host = HostWindow::of(GTK_WINDOW(root));
    if (!host && wraps) host = &HostWindow::make(GTK_WINDOW(root));
    if (!host) return;
  }
  if (host == host_) return;
  leave();
  if (!host) return;
  host_ = host;
  host_->add(*this);
  const auto alive = controller_;
  host_->controller()->addChildViewController(controller_);
  host_->controller()->view()->addSubview(view_);
}

void AdSlot::leave() {
  if (!host_) return;
  const auto alive = controller_;
  if (peer_->isOutside()) moveContent(false);
  host_->remove(*this);
  view_->removeFromSuperview();
  controller_->removeFromParentViewController();
  host_ = nullptr;
}

void AdSlot::windowGone() {
  leave();
}

void AdSlot::follow() {
  auto* layer = host_->layer();
  const CGSize window{double(gtk_widget_get_width(layer)), double(gtk_widget_get_height(layer))};
  auto* parent = gtk_widget_get_parent(widget_);
  auto* place = hides_ && parent ? parent : widget_;  // one that is hidden has no place of its own
  const int width = gtk_widget_get_width(place);
  const double scale = room_.scaleIn(width);
  const CGSize size{std::round(width / scale),
                    hides_ ? 0 : std::round(gtk_widget_get_height(widget_) / scale)};
  graphene_point_t origin;
  const graphene_point_t zero = GRAPHENE_POINT_INIT(0, 0);
  if (!gtk_widget_compute_point(place, layer, &zero, &origin)) return;
  view_->setFrame(room_.frameIn({{origin.x, origin.y}, size}, window));
}

// --- what the ad wants ---------------------------------------------------------------------------------

void AdSlot::contentChanged() {
  const CGSize before = room_.size();
  if (!room_.read(*view_)) return;
  if (room_.size() != before) {
    visibleChanged(nullptr, nullptr, this);
    gtk_widget_queue_resize(widget_);
  }
  const bool outside = host_ && room_.kind() != AdRoom::Kind::Slot;
  if (peer_->isOutside() != outside) moveContent(outside);
  if (host_) follow();
}

// A box keeps its spacing beside a child that is empty, but not beside one that is hidden.
void AdSlot::visibleChanged(GtkWidget*, GParamSpec*, AdSlot* self) noexcept {
  const bool visible = gtk_widget_get_visible(self->widget_);
  if (self->isEmpty() ? !visible : !self->hides_) return;
  self->hides_ = visible && self->isEmpty();
  gtk_widget_set_visible(self->widget_, !self->hides_);
}

void AdSlot::keepRoom(std::optional<CGSize> room) {
  options_.room = room;
  visibleChanged(nullptr, nullptr, this);
  gtk_widget_queue_resize(widget_);
}

// The page runs on while its widgets change places, and what had the focus keeps it.
void AdSlot::moveContent(bool outside) {
  auto* content = peer_->widget();
  const auto kept = GPtr<GtkWidget>::retain(content);
  auto* root = gtk_widget_get_root(content);
  auto* focus = root ? gtk_root_get_focus(root) : nullptr;
  if (focus && !gtk_widget_is_ancestor(focus, content)) focus = nullptr;
  if (gtk_widget_get_parent(content)) gtk_widget_unparent(content);
  peer_->outside_ = outside;
  if (outside)
    host_->controller()->view()->addSubview(view_);  // comes to the front
  else
    gtk_widget_set_parent(content, widget_);
  if (outside) peer_->setFrame(view_->frame());
  if (focus && gtk_widget_get_root(focus)) gtk_widget_grab_focus(focus);
  ViewChanges::note();
}

// --- for applications ----------------------------------------------------------------------------------

GtkWidget* adSlot(const SlotOptions& options) {
  return AdSlot::make(options);
}

void setSlotRoom(GtkWidget* widget, std::optional<CGSize> room) {
  auto* slot = GTK_IS_WIDGET(widget) ? AdSlot::of(widget) : nullptr;
  if (!slot) throw std::invalid_argument("setSlotRoom: not an ad slot");
  slot->keepRoom(room);
}

}  // namespace velto::gtk
