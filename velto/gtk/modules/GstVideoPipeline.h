// A video played by GStreamer's playbin: pictures out of an appsink, sound to whatever sound output there is,
// or nowhere. See VideoPipeline.h.
#pragma once

#include "velto/gtk/modules/VideoPipeline.h"
#include "velto/platform/foundation/GMemory.h"

#include <gio/gio.h>
#include <gst/app/gstappsink.h>
#include <gst/gst.h>

#include <atomic>
#include <cstdint>
#include <memory>
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

  // What GStreamer's threads use. Finding sources and demultiplexers takes long, and a sound server that hangs holds it up without
  // end: it is begun on a thread of GStreamer's, and when this goes meanwhile, ended there. Nobody waits for it.
  struct Shared {
    enum class State : uint8_t { Waiting, Beginning, Begun, Over };
    std::atomic<State> state = State::Waiting;
    std::atomic<bool> isLive = false;
    const GPtr<GTlsDatabase> authorities;
    const std::string proxy;
    const std::shared_ptr<FrameSlot> frames;
    const std::shared_ptr<CarriedBytes> carried;
  };
  static void begin(GstElement* playbin, gpointer shared) noexcept;  // on a thread of its own
  static void sourceMade(GstElement*, GstElement* source, gpointer shared) noexcept;  // on one that loads
  static std::shared_ptr<Shared> makeShared(const char* caFile, const char* proxy,
                                            VideoPipelineEvents& events);

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
  GOwned<GSource, g_source_unref> messages_;
  const std::shared_ptr<Shared> shared_;
  bool toldCarried_ = false;
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
