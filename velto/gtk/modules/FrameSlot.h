// The way of a picture from GStreamer's thread to the main thread: the newest waits, older ones are dropped.
#pragma once

#include "velto/gtk/modules/VideoPipeline.h"

#include <gst/gst.h>

#include <memory>
#include <mutex>

namespace velto::gtk {

class FrameSlot : public std::enable_shared_from_this<FrameSlot> {
 public:
  explicit FrameSlot(VideoPipelineEvents& events) : events_(&events) {}
  FrameSlot(const FrameSlot&) = delete;
  FrameSlot& operator=(const FrameSlot&) = delete;
  ~FrameSlot();

  void put(GstSample* sample);  // any thread; takes the reference over
  void close();                 // main thread: nobody is told any more

 private:
  void show();

  VideoPipelineEvents* events_;  // main thread only
  std::mutex mutex_;
  GstSample* newest_ = nullptr;
  bool waiting_ = false;  // the main thread was asked to come
};

}  // namespace velto::gtk
