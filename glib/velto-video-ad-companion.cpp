// Companions as widgets: each is a page in a slot, which is put there when the widget is first seen.
#include <libintl.h>

#include <cmath>

#include "velto-video-ad-private.h"

using namespace velto_glib;

struct Companion {
  velto::VeltoVideoAdCompanion about;
  std::weak_ptr<velto::VeltoVideoAd> ad;
  size_t number = 0;          // of its ad
  size_t place = 0;           // among its companions
  GtkWidget* slot = nullptr;  // the child; null once it is disposed of
  guint seen = 0;             // the source that takes notice of being mapped
};

struct _VeltoVideoAdCompanion {
  GtkWidget parent_instance;
  Companion* priv;
};

/**
 * VeltoVideoAdCompanion:
 *
 * A widget with what belongs beside the player while a video ad plays, and after it until the next one begins.
 *
 * [method@Velto.VideoAd.get_companions] gives those of an ad. The application puts one that fits into its window, where
 * it loads by itself and counts as shown. When its ad is over it is empty, and takes no room.
 *
 * # CSS nodes
 *
 * `VeltoVideoAdCompanion` has a single CSS node with the name `veltocompanion`.
 *
 * # Accessibility
 *
 * `VeltoVideoAdCompanion` has the role %GTK_ACCESSIBLE_ROLE_GROUP, and is labelled as an advertisement.
 *
 * Since: 1.0
 */
G_DEFINE_FINAL_TYPE(VeltoVideoAdCompanion, velto_video_ad_companion, GTK_TYPE_WIDGET)

// Not in the middle of mapping a window.
static gboolean velto_video_ad_companion_seen(gpointer data) {
  auto& priv = *VELTO_VIDEO_AD_COMPANION(data)->priv;
  priv.seen = 0;
  const auto ad = priv.ad.lock();
  guarded("VeltoVideoAdCompanion", [&] {
    const auto view = ad && isLatest(*ad, priv.number) ? ad->companionView(priv.place) : nullptr;
    if (!view || view->superview()) return;
    ground().slotController(priv.slot)->view()->addSubview(view);
  });
  return G_SOURCE_REMOVE;
}

static void velto_video_ad_companion_map(GtkWidget* widget) {
  auto& priv = *VELTO_VIDEO_AD_COMPANION(widget)->priv;
  GTK_WIDGET_CLASS(velto_video_ad_companion_parent_class)->map(widget);
  if (!priv.seen) priv.seen = g_idle_add(velto_video_ad_companion_seen, widget);
}

static void stop_looking(Companion& priv) {
  if (priv.seen) g_source_remove(std::exchange(priv.seen, 0));
}

static void velto_video_ad_companion_unmap(GtkWidget* widget) {
  stop_looking(*VELTO_VIDEO_AD_COMPANION(widget)->priv);
  GTK_WIDGET_CLASS(velto_video_ad_companion_parent_class)->unmap(widget);
}

static void velto_video_ad_companion_dispose(GObject* object) {
  auto& priv = *VELTO_VIDEO_AD_COMPANION(object)->priv;
  stop_looking(priv);
  g_clear_pointer(&priv.slot, gtk_widget_unparent);
  G_OBJECT_CLASS(velto_video_ad_companion_parent_class)->dispose(object);
}

static void velto_video_ad_companion_finalize(GObject* object) {
  delete VELTO_VIDEO_AD_COMPANION(object)->priv;
  G_OBJECT_CLASS(velto_video_ad_companion_parent_class)->finalize(object);
}

static void velto_video_ad_companion_class_init(VeltoVideoAdCompanionClass* klass) {
  G_OBJECT_CLASS(klass)->dispose = velto_video_ad_companion_dispose;
  G_OBJECT_CLASS(klass)->finalize = velto_video_ad_companion_finalize;
  auto* widget_class = GTK_WIDGET_CLASS(klass);
  widget_class->map = velto_video_ad_companion_map;
  widget_class->unmap = velto_video_ad_companion_unmap;
  gtk_widget_class_set_layout_manager_type(widget_class, GTK_TYPE_BIN_LAYOUT);
  gtk_widget_class_set_css_name(widget_class, "veltocompanion");
  gtk_widget_class_set_accessible_role(widget_class, GTK_ACCESSIBLE_ROLE_GROUP);
}

// One that somebody else makes stays empty.
static void velto_video_ad_companion_init(VeltoVideoAdCompanion* self) {
  self->priv = new Companion;
  auto*& slot = self->priv->slot = ground().makeSlot();
  g_object_set(slot, "accessible-role", GTK_ACCESSIBLE_ROLE_PRESENTATION, nullptr);
  gtk_accessible_update_property(GTK_ACCESSIBLE(self), GTK_ACCESSIBLE_PROPERTY_LABEL,
                                 dgettext("velto", "Advertisement"), -1);
  gtk_widget_set_parent(slot, GTK_WIDGET(self));
}

namespace velto_glib {

bool isLatest(const velto::VeltoVideoAd& ad, size_t number) {
  const auto plays = ad.info();
  return !plays || plays->number == number;
}

GtkWidget* makeCompanion(std::weak_ptr<velto::VeltoVideoAd> ad, size_t number, size_t place,
                         velto::VeltoVideoAdCompanion companion) {
  auto* made = VELTO_VIDEO_AD_COMPANION(g_object_new(VELTO_TYPE_VIDEO_AD_COMPANION, nullptr));
  auto& priv = *made->priv;
  for (auto* text : {&companion.identifier, &companion.slot, &companion.alternativeText})
    *text = validText(*text);
  ground().setSlotRoom(priv.slot, velto::CGSize{std::ceil(companion.width), std::ceil(companion.height)});
  priv.about = std::move(companion);
  priv.ad = std::move(ad);
  priv.number = number;
  priv.place = place;
  return GTK_WIDGET(made);
}

void letCompanionGo(GtkWidget* companion) {
  auto& priv = *VELTO_VIDEO_AD_COMPANION(companion)->priv;
  priv.ad.reset();
  if (priv.slot) guarded("VeltoVideoAdCompanion", [&] { ground().setSlotRoom(priv.slot, std::nullopt); });
}

}  // namespace velto_glib

/**
 * velto_video_ad_companion_get_identifier:
 * @self: a companion
 *
 * Gets the identifier that its server knows it by.
 *
 * Returns: (transfer none): the identifier, which may be empty
 *
 * Since: 1.0
 */
const char* velto_video_ad_companion_get_identifier(VeltoVideoAdCompanion* self) {
  g_return_val_if_fail(VELTO_IS_VIDEO_AD_COMPANION(self), nullptr);
  velto_return_val_if_elsewhere(nullptr);
  return self->priv->about.identifier.c_str();
}

/**
 * velto_video_ad_companion_get_ad_slot:
 * @self: a companion
 *
 * Gets the name of the place that it is for.
 *
 * Returns: (transfer none): the name, which may be empty
 *
 * Since: 1.0
 */
const char* velto_video_ad_companion_get_ad_slot(VeltoVideoAdCompanion* self) {
  g_return_val_if_fail(VELTO_IS_VIDEO_AD_COMPANION(self), nullptr);
  velto_return_val_if_elsewhere(nullptr);
  return self->priv->about.slot.c_str();
}

/**
 * velto_video_ad_companion_get_alternative_text:
 * @self: a companion
 *
 * Gets what it shows, in words.
 *
 * Returns: (transfer none): the words, which may be empty
 *
 * Since: 1.0
 */
const char* velto_video_ad_companion_get_alternative_text(VeltoVideoAdCompanion* self) {
  g_return_val_if_fail(VELTO_IS_VIDEO_AD_COMPANION(self), nullptr);
  velto_return_val_if_elsewhere(nullptr);
  return self->priv->about.alternativeText.c_str();
}

/**
 * velto_video_ad_companion_get_ad_width:
 * @self: a companion
 *
 * Gets its width.
 *
 * Returns: points
 *
 * Since: 1.0
 */
int velto_video_ad_companion_get_ad_width(VeltoVideoAdCompanion* self) {
  g_return_val_if_fail(VELTO_IS_VIDEO_AD_COMPANION(self), 0);
  velto_return_val_if_elsewhere(0);
  return int(std::ceil(self->priv->about.width));
}

/**
 * velto_video_ad_companion_get_ad_height:
 * @self: a companion
 *
 * Gets its height.
 *
 * Returns: points
 *
 * Since: 1.0
 */
int velto_video_ad_companion_get_ad_height(VeltoVideoAdCompanion* self) {
  g_return_val_if_fail(VELTO_IS_VIDEO_AD_COMPANION(self), 0);
  velto_return_val_if_elsewhere(0);
  return int(std::ceil(self->priv->about.height));
}

/**
 * velto_video_ad_companion_is_end_card:
 * @self: a companion
 *
 * Gets whether it is for after the video, in its place.
 *
 * Returns: whether it is
 *
 * Since: 1.0
 */
gboolean velto_video_ad_companion_is_end_card(VeltoVideoAdCompanion* self) {
  g_return_val_if_fail(VELTO_IS_VIDEO_AD_COMPANION(self), FALSE);
  velto_return_val_if_elsewhere(FALSE);
  return self->priv->about.isEndCard;
}
