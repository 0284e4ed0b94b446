// A video played by GStreamer's playbin: pictures out of an appsink, sound to whatever sound output there is,
// or nowhere. See VideoPipeline.h.
#pragma once

#include "velto/gtk/modules/VideoPipeline.h"
#include "velto/platform/foundation/GMemory.h"

#include <gio/gio.h>
#include <gst/app/gstappsink.h>
#include <gst/gst.h>

#include <atomic>
#include <memory>
#include <mutex>
#include <string>

namespace velto::gtk {

class CarriedBytes;
class FrameSlot;

class GstVideoPipeline final : public VideoPipeline {
 public:
  GstVideoPipeline(const char* url, const char* caFile, const char* proxy, VideoPipelineEvents& events);
  GstVideoPipeline(const GstVideoPipeline&) = delete;
  GstVideoPipeline& operator=(const GstVideoPipeline&) = delete;
  ~GstVideoPipeline() override;

  void run(bool playing) override;
  bool jump(Nanoseconds position) override;
  void setVolume(double volume) override;
  Nanoseconds position() const override;

 private:
  static constexpr int mostTriesToComeBack = 4;

  static gboolean received(GstBus*, GstMessage* message, gpointer self) noexcept;
  static void sourceMade(GstElement*, GstElement* source, GstVideoPipeline* self) noexcept;  // also there

  // Finding sources and demultiplexers takes long: begun on a thread of GStreamer's, unless this goes before.
  struct Beginning {
    std::mutex mutex;
    bool isOver = false;
    std::atomic<bool> isLive = false;
  };
  static void begin(GstElement* playbin, gpointer beginning) noexcept;

  GstElement* makePictureSink();
  void useAudioSink(GstElement* sink);
  void applyState();
  void reachedState(GstState state);
  void buffered(int percent);
  void failed(GstMessage* message);
  void goOnSilently();
  void tellCarried();

  VideoPipelineEvents& events_;
  GPtr<GstElement> playbin_;
  GPtr<GstElement> audioSink_;
  GPtr<GTlsDatabase> authorities_;
  const std::string proxy_;
  GOwned<GSource, g_source_unref> messages_;
  std::shared_ptr<FrameSlot> frames_;
  const std::shared_ptr<CarriedBytes> carried_;
  bool toldCarried_ = false;
  const std::shared_ptr<Beginning> beginning_ = std::make_shared<Beginning>();
  bool loaded_ = false;
  bool wanted_ = false;      // to play
  bool buffered_ = true;     // enough data is there
  bool silent_ = false;      // the sound output failed
  bool restarting_ = false;  // loading again, without it
  bool comingBack_ = false;  // and does not play again yet
  int triesToComeBack_ = 0;
  mutable Nanoseconds position_{0};  // the last one known
};

}  // namespace velto::gtk
