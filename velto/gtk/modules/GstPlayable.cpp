// What GStreamer's registry has elements for: no element is made, and no file is looked at.
#include "velto/gtk/modules/VideoPipeline.h"

#include <gst/gst.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <map>
#include <mutex>
#include <string_view>
#include <utility>

namespace velto::gtk {
namespace {

using Pair = std::pair<std::string_view, const char*>;

// MIME types of containers, and of sound without one, with what GStreamer calls them. What a document writes never reaches
// GStreamer itself: its parser of such names nests without limit, and it keeps each name for ever.
constexpr std::array containers{
    Pair{"video/webm", "video/webm"},
    Pair{"audio/webm", "audio/webm"},
    Pair{"video/mp4", "video/quicktime"},
    Pair{"video/x-m4v", "video/quicktime"},
    Pair{"video/quicktime", "video/quicktime"},
    Pair{"video/mov", "video/quicktime"},
    Pair{"audio/mp4", "video/quicktime"},
    Pair{"audio/x-m4a", "video/quicktime"},
    Pair{"video/3gpp", "video/quicktime"},
    Pair{"video/ogg", "application/ogg"},
    Pair{"audio/ogg", "application/ogg"},
    Pair{"application/ogg", "application/ogg"},
    Pair{"video/x-matroska", "video/x-matroska"},
    Pair{"video/mkv", "video/x-matroska"},
    Pair{"video/x-msvideo", "video/x-msvideo"},
    Pair{"video/avi", "video/x-msvideo"},
    Pair{"video/x-flv", "video/x-flv"},
    Pair{"video/x-ms-wmv", "video/x-ms-asf"},
    Pair{"audio/mpeg", "audio/mpeg,mpegversion=1,layer=3"},
    Pair{"audio/mp3", "audio/mpeg,mpegversion=1,layer=3"},
    Pair{"audio/aac", "audio/mpeg,mpegversion=4"},
    Pair{"audio/aacp", "audio/mpeg,mpegversion=4"},
    Pair{"audio/wav", "audio/x-wav"},
    Pair{"audio/x-wav", "audio/x-wav"},
    Pair{"audio/flac", "audio/x-flac"},
    Pair{"video/mp2t", "video/mpegts"},
    Pair{"application/vnd.apple.mpegurl", "application/x-hls"},
    Pair{"application/x-mpegurl", "application/x-hls"},
    Pair{"audio/mpegurl", "application/x-hls"},
    Pair{"application/dash+xml", "application/dash+xml"},
};
constexpr size_t longestType = 64, mostCodecs = 8;

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

bool findElement(GstElementFactoryListType kind, const char* name) {
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

// The names are those of the tables above. A walk through the registry takes long enough to be done once for each.
bool hasElement(GstElementFactoryListType kind, const char* name) {
  // Not destroyed: a process may exit while another thread prepares.
  using Known = std::map<std::pair<GstElementFactoryListType, std::string_view>, bool>;
  static auto& mutex = *new std::mutex;
  static auto& known = *new Known;
  std::lock_guard lock(mutex);
  const auto [at, isNew] = known.try_emplace({kind, name}, false);
  if (isNew) at->second = findElement(kind, name);
  return at->second;
}

bool isMimeType(std::string_view type) {
  const auto isPart = [](std::string_view part) {
    return !part.empty() && std::all_of(part.begin(), part.end(), [](char c) {
      return g_ascii_islower(c) || g_ascii_isdigit(c) || c == '.' || c == '+' || c == '-';
    });
  };
  const auto slash = type.find('/');
  return type.size() <= longestType && slash != std::string_view::npos && isPart(type.substr(0, slash)) &&
         isPart(type.substr(slash + 1));
}

// Without parameters and blanks.
std::string_view bareType(std::string_view type) {
  type = type.substr(0, type.find(';'));
  while (type.ends_with(' ')) type.remove_suffix(1);
  return type;
}

// Films and sound by a name that is not known here may play.
CanPlay canOpen(std::string_view type) {
  for (const auto& [mime, caps] : containers)
    if (mime == type)
      return hasElement(GST_ELEMENT_FACTORY_TYPE_DECODABLE, caps) ? CanPlay::Yes : CanPlay::No;
  const bool isOfFilms = type.starts_with("video/") || type.starts_with("audio/");
  return isOfFilms && isMimeType(type) ? CanPlay::Perhaps : CanPlay::No;
}

// A codec that is not known here may play.
bool canDecode(std::string_view codec) {
  for (const auto& [begin, caps] : codecs)
    if (codec.starts_with(begin)) return hasElement(GST_ELEMENT_FACTORY_TYPE_DECODER, caps);
  return true;
}

bool canDecodeAll(std::string_view list) {
  for (size_t count = 0; !list.empty(); ++count) {
    if (count == mostCodecs) return false;
    const auto end = list.find(',');
    auto one = list.substr(0, end);
    while (one.starts_with(' ')) one.remove_prefix(1);
    if (!canDecode(one)) return false;
    list.remove_prefix(end == std::string_view::npos ? list.size() : end + 1);
  }
  return true;
}

// What nearly every file needs: their plug-ins are opened here.
constexpr std::array elements{"playbin",       "uridecodebin",  "decodebin",
                              "souphttpsrc",   "typefind",      "queue2",
                              "multiqueue",    "playsink",      "streamsynchronizer",
                              "inputselector", "videoconvert",  "videoscale",
                              "audioconvert",  "audioresample", "volume",
                              "appsink",       "autoaudiosink", "fakesink",
                              "matroskademux", "qtdemux",       "vp8dec",
                              "vp9dec",        "vorbisdec",     "opusdec"};

void openPlugIns() {
  for (const char* name : elements) {
    auto* factory = gst_element_factory_find(name);
    if (!factory) continue;
    if (auto* loaded = gst_plugin_feature_load(GST_PLUGIN_FEATURE(factory))) gst_object_unref(loaded);
    gst_object_unref(factory);
  }
}

void lookAtUsualKinds() {
  for (const char* type :
       {"video/webm", "video/mp4", "application/vnd.apple.mpegurl", "application/dash+xml"})
    (void)canOpen(type);
  for (const char* codec : {"avc", "vp8", "vp9", "av1", "mp4a", "opus", "vorbis"}) (void)canDecode(codec);
}

}  // namespace
}  // namespace velto::gtk

extern "C" __attribute__((visibility("default"))) void velto_prepare_video() {
  if (!gst_init_check(nullptr, nullptr, nullptr)) return;
  velto::gtk::openPlugIns();
  velto::gtk::lookAtUsualKinds();
}

extern "C" __attribute__((visibility("default"))) velto::gtk::CanPlay velto_can_play_video(
    const char* type, const char* codec) {
  using namespace velto::gtk;
  if (!gst_init_check(nullptr, nullptr, nullptr)) return CanPlay::Perhaps;  // its player will say why not
  const auto bare = bareType(type);
  const auto opens = *type ? canOpen(bare) : CanPlay::Perhaps;
  if (opens == CanPlay::No || (*codec && !canDecodeAll(codec))) return CanPlay::No;
  const char* usual = *codec ? nullptr : usualCodec(bare);
  if (usual && !hasElement(GST_ELEMENT_FACTORY_TYPE_DECODER, usual)) return CanPlay::No;
  return opens;
}
