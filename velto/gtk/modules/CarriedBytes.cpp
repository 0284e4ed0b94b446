// Counting.
#include "velto/gtk/modules/CarriedBytes.h"

#include <algorithm>

namespace velto::gtk {
namespace {

constexpr size_t enough = size_t{1} << 20U, least = size_t{1} << 16U;
constexpr gint64 shortest = 20'000;  // microseconds: what is faster is fast

}  // namespace

void CarriedBytes::countAt(GstPad* pad) {
  constexpr auto kind =
      static_cast<GstPadProbeType>(GST_PAD_PROBE_TYPE_BUFFER | GST_PAD_PROBE_TYPE_BUFFER_LIST);
  gst_pad_add_probe(pad, kind, passes, new std::shared_ptr(shared_from_this()),
                    [](gpointer held) noexcept { delete static_cast<std::shared_ptr<CarriedBytes>*>(held); });
}

GstPadProbeReturn CarriedBytes::passes(GstPad*, GstPadProbeInfo* info, gpointer held) noexcept {
  const bool isList = (GST_PAD_PROBE_INFO_TYPE(info) & GST_PAD_PROBE_TYPE_BUFFER_LIST) != 0;
  const size_t bytes = isList ? gst_buffer_list_calculate_size(GST_PAD_PROBE_INFO_BUFFER_LIST(info))
                              : gst_buffer_get_size(GST_PAD_PROBE_INFO_BUFFER(info));
  const bool goesOn = (*static_cast<std::shared_ptr<CarriedBytes>*>(held))->add(bytes);
  return goesOn ? GST_PAD_PROBE_OK : GST_PAD_PROBE_REMOVE;
}

// How long the first one took cannot be told.
bool CarriedBytes::add(size_t bytes) {
  std::lock_guard lock(mutex_);
  if (!counts_) return false;
  last_ = g_get_monotonic_time();
  if (first_ == 0)
    first_ = last_;
  else
    bytes_ += bytes;
  counts_ = bytes_ < enough;
  return counts_;
}

void CarriedBytes::stop() {
  std::lock_guard lock(mutex_);
  counts_ = false;
}

bool CarriedBytes::hasAny() const {
  std::lock_guard lock(mutex_);
  return first_ != 0;
}

std::optional<double> CarriedBytes::rate() const {
  constexpr double bitsInByte = 8, microsecondsInMillisecond = 1000;
  std::lock_guard lock(mutex_);
  if (bytes_ < least) return std::nullopt;
  const auto took = static_cast<double>(std::max(last_ - first_, shortest)) / microsecondsInMillisecond;
  return static_cast<double>(bytes_) * bitsInByte / took;  // bits in a millisecond
}

}  // namespace velto::gtk
