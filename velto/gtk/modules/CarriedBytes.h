// How fast the network carries a file: counts what its source hands on until it has to wait for the player, or a megabyte is
// there. The source's thread counts, the main thread reads.
#pragma once

#include <glib.h>
#include <gst/gst.h>

#include <memory>
#include <mutex>
#include <optional>

namespace velto::gtk {

class CarriedBytes : public std::enable_shared_from_this<CarriedBytes> {
 public:
  void countAt(GstPad* pad);  // which keeps it

  // There is enough for now, so what comes later comes at the player's pace.
  void stop();
  bool hasAny() const;
  // Kilobits a second; nothing where too little has come to tell.
  std::optional<double> rate() const;

 private:
  static GstPadProbeReturn passes(GstPad*, GstPadProbeInfo* info, gpointer self) noexcept;
  bool add(size_t bytes);

  mutable std::mutex mutex_;
  bool counts_ = true;
  gint64 first_ = 0, last_ = 0;  // monotonic microseconds
  size_t bytes_ = 0;             // since the first
};

}  // namespace velto::gtk
