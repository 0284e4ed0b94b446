// Modal focus: everything beside the widget and beside its ancestors is told not to take the focus. Whoever
// gets it all the same (the application can give it away by force, or add widgets meanwhile) loses it at
// once. A dialog inside the window, of libadwaita's kind, lies above all of its content, this widget included, and
// has the focus until it closes.
#include "velto/gtk/views/ModalFocus.h"

namespace velto::gtk {
namespace {

// By its name, since the library is not linked with libadwaita; 0 where the application is not either.
GType dialogType() {
  return g_type_from_name("AdwDialog");
}

bool isInDialog(GtkWidget* widget) {
  return widget && dialogType() && gtk_widget_get_ancestor(widget, dialogType());
}

}  // namespace

ModalFocus::ModalFocus(GtkWidget* widget, std::function<void()> escaped, Key pressed)
    : widget_(GPtr<GtkWidget>::retain(widget)),
      keys_(gtk_event_controller_key_new()),
      leftOver_(gtk_event_controller_key_new()),
      escaped_(std::move(escaped)),
      pressed_(std::move(pressed)) {
  auto* root = gtk_widget_get_root(widget);
  g_weak_ref_init(&before_, nullptr);

  // Ahead of the page, which would keep Escape to itself.
  gtk_event_controller_set_propagation_phase(keys_, GTK_PHASE_CAPTURE);
  g_signal_connect(keys_, "key-pressed", G_CALLBACK(keyPressed), this);
  gtk_widget_add_controller(widget, keys_);
  g_signal_connect(leftOver_, "key-pressed", G_CALLBACK(keyLeftOver), this);
  gtk_widget_add_controller(widget, leftOver_);

  g_weak_ref_init(&root_, root);
  if (root) g_signal_connect(root, "notify::focus-widget", G_CALLBACK(focusMoved), this);
  auto* focus = root ? gtk_root_get_focus(root) : nullptr;
  if (!isInDialog(focus)) claim(focus);
}

void ModalFocus::claim(GtkWidget* before) {
  claimed_ = true;
  g_weak_ref_set(&before_, before);
  for (GtkWidget* inside = widget_; inside && !GTK_IS_ROOT(inside); inside = gtk_widget_get_parent(inside)) {
    auto* parent = gtk_widget_get_parent(inside);
    for (auto* beside = parent ? gtk_widget_get_first_child(parent) : nullptr; beside;
         beside = gtk_widget_get_next_sibling(beside))
      if (beside != inside) shutOut(beside);
  }
  gtk_widget_set_focusable(widget_, TRUE);
  gtk_widget_grab_focus(widget_);
}

ModalFocus::~ModalFocus() {
  if (const auto left = GPtr<GObject>::adopt(static_cast<GObject*>(g_weak_ref_get(&root_))))
    g_signal_handlers_disconnect_by_data(left, this);
  for (auto* controller : {keys_, leftOver_}) {
    g_signal_handlers_disconnect_by_data(controller, this);
    gtk_widget_remove_controller(widget_, controller);
  }
  for (const auto& widget : shutOut_) gtk_widget_set_can_focus(widget, TRUE);

  // Only if the focus is still here: the application may have moved it to another window's content meanwhile.
  auto* root = gtk_widget_get_root(widget_);
  auto* focus = root ? gtk_root_get_focus(root) : nullptr;
  const bool isHere = holdsFocus();
  const auto before = GPtr<GtkWidget>::adopt(static_cast<GtkWidget*>(g_weak_ref_get(&before_)));
  gtk_widget_set_focusable(widget_, FALSE);
  if (root && (isHere || !focus))
    gtk_root_set_focus(root, before && gtk_widget_get_root(before) == root ? before.get() : nullptr);
  g_weak_ref_clear(&before_);
  g_weak_ref_clear(&root_);
}

// Nobody's, too, when a page that had it went: then keys would not come here any more.
void ModalFocus::focusMoved(GtkRoot* root, GParamSpec*, ModalFocus* self) noexcept {
  auto* focus = gtk_root_get_focus(root);
  if (self->holdsFocus() || isInDialog(focus)) return;
  if (!self->claimed_) return self->claim(focus);
  if (gtk_widget_get_mapped(self->widget_)) gtk_widget_grab_focus(self->widget_);
}

bool ModalFocus::holdsFocus() const {
  auto* root = gtk_widget_get_root(widget_);
  auto* focus = root ? gtk_root_get_focus(root) : nullptr;
  return focus && (focus == widget_.get() || gtk_widget_is_ancestor(focus, widget_));
}

void ModalFocus::shutOut(GtkWidget* widget) {
  if (!gtk_widget_get_can_focus(widget)) return;
  gtk_widget_set_can_focus(widget, FALSE);
  shutOut_.push_back(GPtr<GtkWidget>::retain(widget));
}

gboolean ModalFocus::keyPressed(GtkEventControllerKey*, guint key, guint, GdkModifierType,
                                ModalFocus* self) noexcept {
  if (key != GDK_KEY_Escape) return GDK_EVENT_PROPAGATE;
  const auto escaped = self->escaped_;
  escaped();
  return GDK_EVENT_STOP;
}

gboolean ModalFocus::keyLeftOver(GtkEventControllerKey*, guint key, guint, GdkModifierType,
                                 ModalFocus* self) noexcept {
  const auto pressed = self->pressed_;
  return pressed(key) ? GDK_EVENT_STOP : GDK_EVENT_PROPAGATE;
}

}  // namespace velto::gtk
