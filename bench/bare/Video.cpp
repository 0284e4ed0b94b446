// Video ads without the library, written the straightforward way: the document by libcurl, its file's address by looking for
// it, and playbin, whose pictures go into a GtkPicture. Nothing is checked, chosen, measured or told.
#include <gst/app/gstappsink.h>
#include <gst/gst.h>
#include <gst/video/video.h>

#include <string>
#include <utility>

#include "LoadProgram.h"
#include "Measure.h"
#include "VideoProgram.h"
#include "bare/Fetch.h"

namespace {

using velto::bench::threadMilliseconds;
using velto::bench::wallMilliseconds;

// The text between the two.
std::string between(const std::string& text, const std::string& begin, const std::string& end) {
  const auto from = text.find(begin);
  const auto to = text.find(end, from);
  if (from == std::string::npos || to == std::string::npos)
    velto::bench::giveUp("no " + begin + " in the document");
  return text.substr(from + begin.size(), to - from - begin.size());
}

class BareLoader : public velto::bench::Loader {
 public:
  BareLoader(const velto::bench::Server& server, GtkWindow* window)
      : server_(server), fetch_(server), window_(window), picture_(GTK_PICTURE(gtk_picture_new())) {
    gtk_overlay_add_overlay(GTK_OVERLAY(gtk_window_get_child(window)), GTK_WIDGET(picture_));
  }
  ~BareLoader() override {
    drop();
    gtk_overlay_remove_overlay(GTK_OVERLAY(gtk_window_get_child(window_)), GTK_WIDGET(picture_));
    g_clear_object(&authorities_);
  }

  void load(std::function<void()> loaded) override {
    loaded_ = std::move(loaded);
    drop();
    const double before = threadMilliseconds();
    const double asked = wallMilliseconds();
    const auto document = fetch_.document(velto::bench::videoDocumentURL(server_.key));
    request_ = wallMilliseconds() - asked;
    fetching_ = threadMilliseconds() - before;
    // The player has no table of hosts: it goes to the server by the address that this one has.
    play("https://localhost:" + server_.port + "/film" +
         between(document, "https://ads.velto.example/film", "</MediaFile>"));
  }

  double uncountedMilliseconds() const override { return fetching_; }
  double requestMilliseconds() const override { return request_; }

 private:
  void play(const std::string& url) {
    gst_init(nullptr, nullptr);
    if (!authorities_) authorities_ = g_tls_file_database_new(server_.caFile.c_str(), nullptr);
    playbin_ = gst_element_factory_make("playbin", nullptr);
    auto* sink = gst_element_factory_make("appsink", nullptr);
    auto* caps = gst_caps_from_string("video/x-raw,format=BGRA,pixel-aspect-ratio=1/1");
    gst_app_sink_set_caps(GST_APP_SINK(sink), caps);
    gst_caps_unref(caps);
    GstAppSinkCallbacks callbacks{};
    callbacks.new_preroll = [](GstAppSink* from, gpointer self) {
      return static_cast<BareLoader*>(self)->take(gst_app_sink_pull_preroll(from));
    };
    callbacks.new_sample = [](GstAppSink* from, gpointer self) {
      return static_cast<BareLoader*>(self)->take(gst_app_sink_pull_sample(from));
    };
    gst_app_sink_set_callbacks(GST_APP_SINK(sink), &callbacks, this, nullptr);
    g_signal_connect(playbin_, "source-setup",
                     G_CALLBACK(+[](GstElement*, GstElement* source, BareLoader* self) {
                       g_object_set(source, "tls-database", self->authorities_, nullptr);
                     }),
                     this);
    g_object_set(playbin_, "uri", url.c_str(), "video-sink", sink, nullptr);
    gst_element_set_state(playbin_, GST_STATE_PLAYING);
  }

  void drop() {
    if (!playbin_) return;
    gst_element_set_state(playbin_, GST_STATE_NULL);
    gst_object_unref(std::exchange(playbin_, nullptr));
    ++play_;
    gtk_picture_set_paintable(picture_, nullptr);
  }

  // On the player's thread.
  GstFlowReturn take(GstSample* sample) {
    struct Shown {
      BareLoader* self;
      int play;
      GdkTexture* texture;
    };
    if (!sample) return GST_FLOW_OK;
    GstVideoInfo info;
    GstVideoFrame frame;
    if (gst_video_info_from_caps(&info, gst_sample_get_caps(sample)) &&
        gst_video_frame_map(&frame, &info, gst_sample_get_buffer(sample), GST_MAP_READ)) {
      const auto stride = static_cast<size_t>(GST_VIDEO_FRAME_PLANE_STRIDE(&frame, 0));
      auto* bytes = g_bytes_new(GST_VIDEO_FRAME_PLANE_DATA(&frame, 0),
                                stride * static_cast<size_t>(GST_VIDEO_FRAME_HEIGHT(&frame)));
      auto* texture = gdk_memory_texture_new(GST_VIDEO_FRAME_WIDTH(&frame), GST_VIDEO_FRAME_HEIGHT(&frame),
                                             GDK_MEMORY_B8G8R8A8_PREMULTIPLIED, bytes, stride);
      g_bytes_unref(bytes);
      gst_video_frame_unmap(&frame);
      g_idle_add_full(
          G_PRIORITY_DEFAULT,
          [](gpointer data) -> gboolean {
            const auto* shown = static_cast<Shown*>(data);
            shown->self->show(shown->play, shown->texture);
            return G_SOURCE_REMOVE;
          },
          new Shown{this, play_, texture},
          [](gpointer data) {
            g_object_unref(static_cast<Shown*>(data)->texture);
            delete static_cast<Shown*>(data);
          });
    }
    gst_sample_unref(sample);
    return GST_FLOW_OK;
  }

  void show(int play, GdkTexture* texture) {
    if (!playbin_ || play != play_) return;  // of the one before
    gtk_picture_set_paintable(picture_, GDK_PAINTABLE(texture));
    if (const auto loaded = std::exchange(loaded_, nullptr)) velto::bench::afterNextPaint(window_, loaded);
  }

  const velto::bench::Server server_;
  velto::bench::Fetch fetch_;
  GtkWindow* const window_;
  GtkPicture* const picture_;
  GTlsDatabase* authorities_ = nullptr;
  GstElement* playbin_ = nullptr;
  int play_ = 0;  // changes only while no thread of a player is there
  std::function<void()> loaded_;
  double fetching_ = 0, request_ = 0;
};

}  // namespace

int main(int count, char** words) {
  return velto::bench::runLoads(count, words, [](const velto::bench::Server& server, GtkWindow* window) {
    return std::make_unique<BareLoader>(server, window);
  });
}
