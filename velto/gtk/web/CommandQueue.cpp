// Commands, a few milliseconds of each frame.
#include "velto/gtk/web/CommandQueue.h"

#include <algorithm>
#include <utility>

namespace velto::gtk {
namespace {

constexpr gint64 period = 16'000;     // microseconds: about a frame
constexpr gint64 allowance = 4'000;   // of each for commands
constexpr size_t mostWaiting = 4096;  // no creative has that much to say

}  // namespace

void CommandQueue::add(Command command) {
  if (!tell_ || waiting_.size() >= mostWaiting) return;
  waiting_.push_back(std::move(command));
  if (!source_ && !telling_) tellWhatTimeAllows();
}

void CommandQueue::close() {
  tell_ = nullptr;
  waiting_.clear();
  if (source_) g_source_remove(std::exchange(source_, 0));
}

bool CommandQueue::hasTime() {
  const gint64 now = g_get_monotonic_time();
  if (now - periodBegan_ >= period) {
    periodBegan_ = now;
    spent_ = 0;
  }
  return spent_ < allowance;
}

void CommandQueue::tellWhatTimeAllows() {
  const auto self = shared_from_this();
  telling_ = true;
  while (!waiting_.empty() && hasTime()) {
    const Command next = std::move(waiting_.front());
    waiting_.pop_front();
    const gint64 began = g_get_monotonic_time();
    const auto tell = tell_;
    tell(next);
    spent_ += g_get_monotonic_time() - began;
  }
  telling_ = false;
  if (!waiting_.empty()) wait();
}

// After what the toolkit has to do for the next frame.
void CommandQueue::wait() {
  const gint64 left = periodBegan_ + period - g_get_monotonic_time();
  source_ = g_timeout_add_full(G_PRIORITY_DEFAULT_IDLE, static_cast<guint>(std::max<gint64>(1, left / 1000)),
                               continueTelling, this, nullptr);
}

gboolean CommandQueue::continueTelling(gpointer queue) noexcept {
  auto* self = static_cast<CommandQueue*>(queue);
  self->source_ = 0;
  self->tellWhatTimeAllows();
  return G_SOURCE_REMOVE;
}

}  // namespace velto::gtk
