// Sums and limits.
#include "velto/timeline/AdScales.h"

#include <algorithm>
#include <array>

namespace velto {
namespace {

// What came since the last look. A figure that fell, as that of threads which have ended, adds nothing.
template <class Figure>
void grow(std::optional<Figure>& sum, const std::optional<Figure>& before, const std::optional<Figure>& now) {
  if (before && now) sum = sum.value_or(0) + (*now > *before ? *now - *before : Figure(0));
}

}  // namespace

std::string_view nameOf(VeltoAdLimit limit) {
  constexpr std::array names{"network", "processor-peak", "processor", "memory", "unseen"};
  return names[static_cast<size_t>(limit)];
}

// What began before the while counts from its first look on, so a figure is rather too small than too large.
void AdScales::Recent::add(double seconds, double used) {
  looks_.emplace_back(seconds, used);
  while (looks_.front().first < seconds - span_) looks_.pop_front();
}

std::vector<VeltoAdExcess> AdScales::add(const Look& look) {
  if (!first_) first_ = look;
  const bool isSame = last_ && last_->use.process == look.use.process;
  const bool isAlone = look.use.pages <= 1 && (!last_ || last_->use.pages <= 1);
  if (isSame && isAlone) own_.add(last_->use, look.use);
  if (isSame && (isAlone || look.use.isShared)) together_.add(last_->use, look.use);
  if (last_ && last_->use.isShared && !look.use.isShared) {  // what others used, went with them
    together_ = own_;
    peak_.clear();
    unseen_.clear();
  }
  last_ = look;
  weight_ = own_.weight;
  weight_.seconds = look.seconds - first_->seconds;
  weight_.networkBytes = look.use.networkBytes;

  const double used = together_.weight.processorSeconds.value_or(0);
  peak_.add(look.seconds, used);
  if (look.unseen)
    unseen_.add(look.seconds, used);
  else
    unseen_.clear();

  std::vector<VeltoAdExcess> crossed;
  const auto check = [&](VeltoAdLimit limit, double figure, double most) {
    if (!touched_ && figure > most && told_.insert(limit).second)
      crossed.push_back(
          {limit, figure, most, look.use.isShared && limit != VeltoAdLimit::Network ? look.use.pages : 1});
  };
  check(VeltoAdLimit::Network, static_cast<double>(weight_.networkBytes.value_or(0)),
        static_cast<double>(limits_.networkBytes));
  check(VeltoAdLimit::ProcessorPeak, peak_.used(), limits_.processorPeakSeconds);
  check(VeltoAdLimit::Processor, used, limits_.processorSeconds);
  check(VeltoAdLimit::Memory, static_cast<double>(together_.weight.memoryBytes.value_or(0)),
        static_cast<double>(limits_.memoryBytes));
  check(VeltoAdLimit::Unseen, unseen_.used(), limits_.unseenProcessorSeconds);
  return crossed;
}

void AdScales::Sums::add(const WebPageUse& before, const WebPageUse& now) {
  grow(weight.processorSeconds, before.processorSeconds, now.processorSeconds);
  grow(weight.mainThreadSeconds, before.mainThreadSeconds, now.mainThreadSeconds);
  grow(weight.wakeUps, before.wakeUps, now.wakeUps);
  if (!before.memoryBytes || !now.memoryBytes) return;
  // What the page gives back may have been there before it.
  memory = std::max(
      0.0, memory + static_cast<double>(*now.memoryBytes) - static_cast<double>(*before.memoryBytes));
  weight.memoryBytes = std::max(weight.memoryBytes.value_or(0), static_cast<uint64_t>(memory));
}

}  // namespace velto
