// Handing pictures over without copying them.
#include "velto/gtk/modules/FrameSlot.h"

#include <gst/video/video.h>

#include <utility>

namespace velto::gtk {

FrameSlot::~FrameSlot() {
  if (newest_) gst_sample_unref(newest_);
}

void FrameSlot::put(GstSample* sample) {
  GstSample* old = nullptr;
  bool wake = false;
  {
    std::lock_guard lock(mutex_);
    old = std::exchange(newest_, sample);
    wake = !std::exchange(waiting_, true);
  }
  if (old) gst_sample_unref(old);
  if (!wake) return;
  // Not by way of an invocation, which would run here while the main loop stands still.
  g_idle_add_full(
      G_PRIORITY_DEFAULT,
      [](gpointer slot) noexcept -> gboolean {
        (*static_cast<std::shared_ptr<FrameSlot>*>(slot))->show();
        return G_SOURCE_REMOVE;
      },
      new std::shared_ptr<FrameSlot>(shared_from_this()),
      [](gpointer slot) noexcept { delete static_cast<std::shared_ptr<FrameSlot>*>(slot); });
}

void FrameSlot::close() {
  events_ = nullptr;
  std::lock_guard lock(mutex_);
  if (auto* sample = std::exchange(newest_, nullptr)) gst_sample_unref(sample);
}

void FrameSlot::show() {
  GstSample* sample = nullptr;
  {
    std::lock_guard lock(mutex_);
    sample = std::exchange(newest_, nullptr);
    waiting_ = false;
  }
  if (!sample) return;
  GstVideoInfo info;
  auto* mapped = new GstVideoFrame;
  GstBuffer* buffer = gst_sample_get_buffer(sample);
  const bool readable = events_ && buffer && gst_video_info_from_caps(&info, gst_sample_get_caps(sample)) &&
                        gst_video_frame_map(mapped, &info, buffer, GST_MAP_READ);
  gst_sample_unref(sample);  // the mapping keeps the buffer
  if (!readable) {
    delete mapped;
    return;
  }
  const int width = GST_VIDEO_FRAME_WIDTH(mapped);
  const int height = GST_VIDEO_FRAME_HEIGHT(mapped);
  const auto stride = static_cast<size_t>(GST_VIDEO_FRAME_PLANE_STRIDE(mapped, 0));
  GBytes* pixels = g_bytes_new_with_free_func(
      GST_VIDEO_FRAME_PLANE_DATA(mapped, 0), stride * static_cast<size_t>(height),
      [](gpointer frame) noexcept {
        gst_video_frame_unmap(static_cast<GstVideoFrame*>(frame));
        delete static_cast<GstVideoFrame*>(frame);
      },
      mapped);
  events_->pipelineShows({pixels, width, height, stride});
  g_bytes_unref(pixels);
}

}  // namespace velto::gtk
