// What a video ad says of itself, for who reads introspection.
#include "velto-video-ad-private.h"

using namespace velto_glib;

struct _VeltoVideoAdInfo {
  GObject parent_instance;
  velto::VeltoVideoAdInfo* info;
};

/**
 * VeltoVideoAdInfo:
 *
 * What a video ad says of itself, as it is when it starts. Its texts are its server's.
 *
 * Since: 1.0
 */
G_DEFINE_FINAL_TYPE(VeltoVideoAdInfo, velto_video_ad_info, G_TYPE_OBJECT)

static void velto_video_ad_info_finalize(GObject* object) {
  delete VELTO_VIDEO_AD_INFO(object)->info;
  G_OBJECT_CLASS(velto_video_ad_info_parent_class)->finalize(object);
}

static void velto_video_ad_info_class_init(VeltoVideoAdInfoClass* klass) {
  G_OBJECT_CLASS(klass)->finalize = velto_video_ad_info_finalize;
}

// One that somebody else makes says nothing.
static void velto_video_ad_info_init(VeltoVideoAdInfo* self) {
  self->info = new velto::VeltoVideoAdInfo;
}

namespace velto_glib {

std::string validText(const std::string& text) {
  auto* valid = g_utf8_make_valid(text.c_str(), gssize(text.size()));
  std::string made = valid;
  g_free(valid);
  return made;
}

VeltoVideoAdInfo* videoAdInfoFrom(velto::VeltoVideoAdInfo info) {
  auto* made = VELTO_VIDEO_AD_INFO(g_object_new(VELTO_TYPE_VIDEO_AD_INFO, nullptr));
  for (auto* text : {&info.identifier, &info.title, &info.advertiser, &info.adSystem})
    *text = validText(*text);
  *made->info = std::move(info);
  return made;
}

}  // namespace velto_glib

/**
 * velto_video_ad_info_get_identifier:
 * @self: what a video ad says
 *
 * Gets the identifier that its server knows it by.
 *
 * Returns: (transfer none): the identifier, which may be empty
 *
 * Since: 1.0
 */
const char* velto_video_ad_info_get_identifier(VeltoVideoAdInfo* self) {
  g_return_val_if_fail(VELTO_IS_VIDEO_AD_INFO(self), nullptr);
  velto_return_val_if_elsewhere(nullptr);
  return self->info->identifier.c_str();
}

/**
 * velto_video_ad_info_get_title:
 * @self: what a video ad says
 *
 * Gets what it is called.
 *
 * Returns: (transfer none): the title, which may be empty
 *
 * Since: 1.0
 */
const char* velto_video_ad_info_get_title(VeltoVideoAdInfo* self) {
  g_return_val_if_fail(VELTO_IS_VIDEO_AD_INFO(self), nullptr);
  velto_return_val_if_elsewhere(nullptr);
  return self->info->title.c_str();
}

/**
 * velto_video_ad_info_get_advertiser:
 * @self: what a video ad says
 *
 * Gets who advertises.
 *
 * Returns: (transfer none): the name, which may be empty
 *
 * Since: 1.0
 */
const char* velto_video_ad_info_get_advertiser(VeltoVideoAdInfo* self) {
  g_return_val_if_fail(VELTO_IS_VIDEO_AD_INFO(self), nullptr);
  velto_return_val_if_elsewhere(nullptr);
  return self->info->advertiser.c_str();
}

/**
 * velto_video_ad_info_get_ad_system:
 * @self: what a video ad says
 *
 * Gets which system has sent it.
 *
 * Returns: (transfer none): the name, which may be empty
 *
 * Since: 1.0
 */
const char* velto_video_ad_info_get_ad_system(VeltoVideoAdInfo* self) {
  g_return_val_if_fail(VELTO_IS_VIDEO_AD_INFO(self), nullptr);
  velto_return_val_if_elsewhere(nullptr);
  return self->info->adSystem.c_str();
}

/**
 * velto_video_ad_info_get_number:
 * @self: what a video ad says
 *
 * Gets which one of the ads that were loaded it is.
 *
 * Returns: the number, from 1 on
 *
 * Since: 1.0
 */
guint velto_video_ad_info_get_number(VeltoVideoAdInfo* self) {
  g_return_val_if_fail(VELTO_IS_VIDEO_AD_INFO(self), 0);
  velto_return_val_if_elsewhere(0);
  return guint(self->info->number);
}

/**
 * velto_video_ad_info_get_count:
 * @self: what a video ad says
 *
 * Gets how many ads were loaded to be played one after another.
 *
 * Returns: how many
 *
 * Since: 1.0
 */
guint velto_video_ad_info_get_count(VeltoVideoAdInfo* self) {
  g_return_val_if_fail(VELTO_IS_VIDEO_AD_INFO(self), 0);
  velto_return_val_if_elsewhere(0);
  return guint(self->info->count);
}

/**
 * velto_video_ad_info_get_duration:
 * @self: what a video ad says
 *
 * Gets how long it is.
 *
 * Returns: seconds, or 0 where that is not known
 *
 * Since: 1.0
 */
double velto_video_ad_info_get_duration(VeltoVideoAdInfo* self) {
  g_return_val_if_fail(VELTO_IS_VIDEO_AD_INFO(self), 0);
  velto_return_val_if_elsewhere(0);
  return self->info->duration;
}

/**
 * velto_video_ad_info_get_skippable_after:
 * @self: what a video ad says
 *
 * Gets from when on a person may skip it.
 *
 * Returns: seconds from its start, or -1 where it cannot be skipped
 *
 * Since: 1.0
 */
double velto_video_ad_info_get_skippable_after(VeltoVideoAdInfo* self) {
  g_return_val_if_fail(VELTO_IS_VIDEO_AD_INFO(self), -1);
  velto_return_val_if_elsewhere(-1);
  return self->info->skippableAfter.value_or(-1);
}

/**
 * velto_video_ad_info_leads_somewhere:
 * @self: what a video ad says
 *
 * Gets whether a press on it opens something.
 *
 * Returns: whether it does
 *
 * Since: 1.0
 */
gboolean velto_video_ad_info_leads_somewhere(VeltoVideoAdInfo* self) {
  g_return_val_if_fail(VELTO_IS_VIDEO_AD_INFO(self), FALSE);
  velto_return_val_if_elsewhere(FALSE);
  return self->info->leadsSomewhere;
}
