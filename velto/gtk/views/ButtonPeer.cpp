// The button: painting, press feedback, keyboard, accessible name.
#include "velto/gtk/views/ButtonPeer.h"

#include "velto/gtk/Translations.h"
#include "velto/platform/ui/UIButton.h"

#include <algorithm>

namespace velto::gtk {
namespace {

constexpr double scaleStep = 0.1;

using PangoLayoutOwned = GPtr<PangoLayout>;

// What a screen reader says: buttons without words close something here, or count until they do.
std::string spokenName(const std::string& title) {
  if (title.empty() || title == "X") return translated("Close");
  if (title.find_first_not_of("0123456789") != std::string::npos) return translated(title.c_str());
  return GText(g_strdup_printf(translated("Close in %s seconds"), title.c_str())).get();
}

bool isInside(GtkWidget* widget, double x, double y) {
  return x >= 0 && y >= 0 && x < gtk_widget_get_width(widget) && y < gtk_widget_get_height(widget);
}

GskRoundedRect outline(const ButtonShape& shape, double grow) {
  const graphene_rect_t rect = GRAPHENE_RECT_INIT(static_cast<float>(shape.rect.minX() - grow),
                                                  static_cast<float>(shape.rect.minY() - grow),
                                                  static_cast<float>(shape.rect.size.width + 2 * grow),
                                                  static_cast<float>(shape.rect.size.height + 2 * grow));
  GskRoundedRect rounded;
  gsk_rounded_rect_init_from_rect(&rounded, &rect,
                                  static_cast<float>(std::max(0.0, shape.cornerRadius + grow)));
  return rounded;
}

void paintShape(GtkSnapshot* snapshot, const ButtonShape& shape) {
  const GskRoundedRect fill = outline(shape, 0);
  if (shape.shadowOpacity > 0) {
    const GdkRGBA shadow = clamped({0, 0, 0, shape.shadowOpacity});
    gtk_snapshot_append_outset_shadow(snapshot, &fill, &shadow, 0, 0, 0,
                                      static_cast<float>(shape.shadowRadius));
  }
  if (const auto color = shape.fillColor.components()) {
    const GdkRGBA painted = clamped(*color);
    gtk_snapshot_push_rounded_clip(snapshot, &fill);
    gtk_snapshot_append_color(snapshot, &painted, &fill.bounds);
    gtk_snapshot_pop(snapshot);
  }
  if (const auto color = shape.strokeColor.components(); color && shape.lineWidth > 0) {
    // A border is painted inside its outline, a stroke lies half on each side of it.
    const GskRoundedRect edge = outline(shape, shape.lineWidth / 2);
    const auto width = static_cast<float>(shape.lineWidth);
    const float widths[4] = {width, width, width, width};
    const GdkRGBA painted = clamped(*color);
    const GdkRGBA colors[4] = {painted, painted, painted, painted};
    gtk_snapshot_append_border(snapshot, &edge, widths, colors);
  }
}

// The light under a finger that a button without a shape of its own shows.
void paintTouch(GtkSnapshot* snapshot, float width, float height) {
  const graphene_rect_t bounds = GRAPHENE_RECT_INIT(0, 0, width, height);
  const graphene_point_t center = GRAPHENE_POINT_INIT(width / 2, height / 2);
  const GskColorStop stops[2] = {{0, {1, 1, 1, 0.7F}}, {1, {1, 1, 1, 0}}};
  gtk_snapshot_append_radial_gradient(snapshot, &bounds, &center, width / 2, height / 2, 0, 1, stops, 2);
}

void paintTitle(GtkWidget* widget, GtkSnapshot* snapshot, const ButtonLook& look, float width, float height) {
  const auto color = look.titleColor.components();
  if (look.title.empty() || !color) return;
  const auto layout =
      PangoLayoutOwned::adopt(gtk_widget_create_pango_layout(widget, translated(look.title.c_str())));
  const GOwned<PangoFontDescription, pango_font_description_free> font(
      pango_font_description_copy(pango_context_get_font_description(gtk_widget_get_pango_context(widget))));
  int textWidth = 0;
  int textHeight = 0;
  // Large letters, as far as the button has room for them.
  for (double scale = textScale();; scale = std::max(1.0, scale - scaleStep)) {
    pango_font_description_set_absolute_size(font.get(), look.fontSize * scale * PANGO_SCALE);
    pango_layout_set_font_description(layout, font.get());
    pango_layout_get_pixel_size(layout, &textWidth, &textHeight);
    if (scale == 1 || (float(textWidth) <= width && float(textHeight) <= height)) break;
  }
  const graphene_point_t origin = GRAPHENE_POINT_INIT((width - static_cast<float>(textWidth)) / 2,
                                                      (height - static_cast<float>(textHeight)) / 2);
  const GdkRGBA painted = clamped(*color);
  gtk_snapshot_save(snapshot);
  gtk_snapshot_translate(snapshot, &origin);
  gtk_snapshot_append_layout(snapshot, layout, &painted);
  gtk_snapshot_restore(snapshot);
}

// Seen only while the button was reached by keyboard: dark in a light edge, so on whatever the ad paints.
void paintFocus(GtkSnapshot* snapshot, float width, float height) {
  const float widths[4] = {2, 2, 2, 2};
  const GdkRGBA shades[2] = {{1, 1, 1, 1}, {0.1F, 0.3F, 0.7F, 1}};
  for (int i = 0; i < 2; ++i) {
    const auto inset = static_cast<float>(2 * i);
    const graphene_rect_t bounds = GRAPHENE_RECT_INIT(inset, inset, width - 2 * inset, height - 2 * inset);
    GskRoundedRect edge;
    gsk_rounded_rect_init_from_rect(&edge, &bounds, 4);
    const GdkRGBA colors[4] = {shades[i], shades[i], shades[i], shades[i]};
    gtk_snapshot_append_border(snapshot, &edge, widths, colors);
  }
}

}  // namespace

PushButtonPeer::PushButtonPeer()
    : Peer(GTK_ACCESSIBLE_ROLE_BUTTON),
      press_(gtk_gesture_click_new()),
      keys_(gtk_event_controller_key_new()) {
  setViewTarget(widget(), ViewTarget::Always);
  setViewPainter(widget(), [this](GtkWidget*, GtkSnapshot* snapshot, float width, float height) {
    paint(snapshot, width, height);
  });
  gtk_widget_set_focusable(widget(), TRUE);
  g_signal_connect_swapped(widget(), "state-flags-changed", G_CALLBACK(gtk_widget_queue_draw),
                           widget());  // focus
  g_signal_connect_object(gtk_settings_get_default(), "notify::gtk-xft-dpi",
                          G_CALLBACK(gtk_widget_queue_draw), widget(), G_CONNECT_SWAPPED);

  g_signal_connect(press_, "pressed", G_CALLBACK(pressed), this);
  g_signal_connect(press_, "update", G_CALLBACK(moved), this);
  g_signal_connect(press_, "released", G_CALLBACK(released), this);
  g_signal_connect(press_, "cancel", G_CALLBACK(cancelled), this);
  gtk_widget_add_controller(widget(), GTK_EVENT_CONTROLLER(press_));
  g_signal_connect(keys_, "key-pressed", G_CALLBACK(keyPressed), this);
  gtk_widget_add_controller(widget(), keys_);
}

PushButtonPeer::~PushButtonPeer() {
  g_signal_handlers_disconnect_by_data(press_, this);
  g_signal_handlers_disconnect_by_data(keys_, this);
  setViewPainter(widget(), nullptr);
}

void PushButtonPeer::setLook(const ButtonLook& look) {
  auto* accessible = GTK_ACCESSIBLE(widget());
  if (!isNamed_ || look.title != look_.title)
    gtk_accessible_update_property(accessible, GTK_ACCESSIBLE_PROPERTY_LABEL, spokenName(look.title).c_str(),
                                   -1);
  if (!isNamed_ || look.enabled != look_.enabled)
    gtk_accessible_update_state(accessible, GTK_ACCESSIBLE_STATE_DISABLED, look.enabled ? FALSE : TRUE, -1);
  isNamed_ = true;
  look_ = look;
  gtk_widget_queue_draw(widget());
}

void PushButtonPeer::paint(GtkSnapshot* snapshot, float width, float height) const {
  if (look_.shape) paintShape(snapshot, *look_.shape);
  if (look_.showsTouchWhenHighlighted && highlighted_) paintTouch(snapshot, width, height);
  paintTitle(widget(), snapshot, look_, width, height);
  if (gtk_widget_has_visible_focus(widget())) paintFocus(snapshot, width, height);
}

// A disabled button takes its touches too: what lies below it must not get them.
void PushButtonPeer::pressed(GtkGestureClick* gesture, int, double, double, PushButtonPeer* self) noexcept {
  gtk_gesture_set_state(GTK_GESTURE(gesture), GTK_EVENT_SEQUENCE_CLAIMED);
  if (self->look_.enabled) self->highlight(true);
}

void PushButtonPeer::moved(GtkGesture* gesture, GdkEventSequence* sequence, PushButtonPeer* self) noexcept {
  double x = 0;
  double y = 0;
  if (self->look_.enabled && gtk_gesture_get_point(gesture, sequence, &x, &y))
    self->highlight(isInside(self->widget(), x, y));
}

void PushButtonPeer::released(GtkGestureClick*, int, double x, double y, PushButtonPeer* self) noexcept {
  const auto button = self->button();  // the action may remove it
  self->highlight(false);
  if (button && self->look_.enabled && isInside(self->widget(), x, y)) button->peerTapped({x, y});
}

void PushButtonPeer::cancelled(GtkGesture*, GdkEventSequence*, PushButtonPeer* self) noexcept {
  self->highlight(false);
}

gboolean PushButtonPeer::keyPressed(GtkEventControllerKey*, guint key, guint, GdkModifierType,
                                    PushButtonPeer* self) noexcept {
  if (key != GDK_KEY_Return && key != GDK_KEY_KP_Enter && key != GDK_KEY_space) return GDK_EVENT_PROPAGATE;
  const auto button = self->button();
  if (button && self->look_.enabled) button->peerTouchedUpInside();
  return GDK_EVENT_STOP;
}

std::shared_ptr<UIButton> PushButtonPeer::button() const {
  return std::dynamic_pointer_cast<UIButton>(owner_->weak_from_this().lock());
}

void PushButtonPeer::highlight(bool highlighted) {
  if (std::exchange(highlighted_, highlighted) == highlighted) return;
  if (const auto owner = button()) owner->peerHighlighted(highlighted);
}

}  // namespace velto::gtk
