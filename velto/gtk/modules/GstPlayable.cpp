// What GStreamer's registry has elements for: no element is made, and no file is looked at.
#include "velto/gtk/modules/VideoPipeline.h"

#include <gst/gst.h>

#include <array>
#include <string>
#include <string_view>
#include <utility>

namespace velto::gtk {
namespace {

using Pair = std::pair<std::string_view, const char*>;

// MIME types of containers, and what GStreamer calls them. Where the names are the same they are not listed.
constexpr std::array containers{
    Pair{"video/mp4", "video/quicktime"},
    Pair{"video/x-m4v", "video/quicktime"},
    Pair{"audio/mp4", "video/quicktime"},
    Pair{"video/3gpp", "video/quicktime"},
    Pair{"video/ogg", "application/ogg"},
    Pair{"audio/ogg", "application/ogg"},
    Pair{"video/x-ms-wmv", "video/x-ms-asf"},
    Pair{"audio/mpeg", "audio/mpeg,mpegversion=1,layer=3"},
    Pair{"audio/mp3", "audio/mpeg,mpegversion=1,layer=3"},
    Pair{"video/mp2t", "video/mpegts"},
    Pair{"application/vnd.apple.mpegurl", "application/x-hls"},
    Pair{"application/x-mpegurl", "application/x-hls"},
    Pair{"audio/mpegurl", "application/x-hls"},
};

// By how names of codecs begin (RFC 6381).
constexpr std::array codecs{
    Pair{"avc", "video/x-h264"},
    Pair{"h264", "video/x-h264"},
    Pair{"h.264", "video/x-h264"},
    Pair{"hvc", "video/x-h265"},
    Pair{"hev", "video/x-h265"},
    Pair{"hevc", "video/x-h265"},
    Pair{"vp8", "video/x-vp8"},
    Pair{"vp08", "video/x-vp8"},
    Pair{"vp9", "video/x-vp9"},
    Pair{"vp09", "video/x-vp9"},
    Pair{"av1", "video/x-av1"},
    Pair{"av01", "video/x-av1"},
    Pair{"theora", "video/x-theora"},
    Pair{"opus", "audio/x-opus"},
    Pair{"vorbis", "audio/x-vorbis"},
    Pair{"mp4a.6b", "audio/mpeg,mpegversion=1,layer=3"},
    Pair{"mp4a", "audio/mpeg,mpegversion=4"},
    Pair{"mp3", "audio/mpeg,mpegversion=1,layer=3"},
    Pair{"ac-3", "audio/x-ac3"},
    Pair{"ec-3", "audio/x-eac3"},
    Pair{"flac", "audio/x-flac"},
};

// Where a document does not say the codec, the one that nearly all such files have.
const char* usualCodec(std::string_view type) {
  return type == "video/mp4" || type == "video/x-m4v" ? "video/x-h264" : nullptr;
}

bool hasElement(GstElementFactoryListType kind, const char* name) {
  GstCaps* caps = gst_caps_from_string(name);
  if (!caps) return false;
  GList* all = gst_element_factory_list_get_elements(kind, GST_RANK_MARGINAL);
  GList* fitting = gst_element_factory_list_filter(all, caps, GST_PAD_SINK, FALSE);
  const bool found = fitting != nullptr;
  gst_plugin_feature_list_free(fitting);
  gst_plugin_feature_list_free(all);
  gst_caps_unref(caps);
  return found;
}

bool canOpen(std::string_view type) {
  const std::string own(type.substr(0, type.find(';')));
  const char* name = own.c_str();
  for (const auto& [mime, caps] : containers)
    if (mime == own) name = caps;
  return hasElement(GST_ELEMENT_FACTORY_TYPE_DECODABLE, name);
}

// A codec that is not known here may play.
bool canDecode(std::string_view codec) {
  for (const auto& [begin, caps] : codecs)
    if (codec.starts_with(begin)) return hasElement(GST_ELEMENT_FACTORY_TYPE_DECODER, caps);
  return true;
}

bool canDecodeAll(std::string_view list) {
  while (!list.empty()) {
    const auto end = list.find(',');
    auto one = list.substr(0, end);
    while (one.starts_with(' ')) one.remove_prefix(1);
    if (!canDecode(one)) return false;
    list.remove_prefix(end == std::string_view::npos ? list.size() : end + 1);
  }
  return true;
}

}  // namespace
}  // namespace velto::gtk

extern "C" __attribute__((visibility("default"))) gboolean velto_can_play_video(const char* type,
                                                                                const char* codec) {
  using namespace velto::gtk;
  if (!gst_init_check(nullptr, nullptr, nullptr)) return TRUE;  // its player will say why not
  if (*type && !canOpen(type)) return FALSE;
  if (*codec) return canDecodeAll(codec);
  const char* usual = usualCodec(type);
  return !usual || hasElement(GST_ELEMENT_FACTORY_TYPE_DECODER, usual);
}
