// Weighs one ad: adds up what its page has used from look to look, and tells when that has crossed a limit. Asks
// nobody, not even for the time; main thread.
#pragma once

#include "velto/platform/WebPageUse.h"
#include "velto/timeline/VeltoAdWeight.h"

#include <deque>
#include <set>
#include <utility>
#include <vector>

namespace velto {

class AdScales {
 public:
  struct Look {
    double seconds = 0;  // monotonic
    WebPageUse use;
    bool unseen = false;  // the page knows that nobody sees it
  };

  explicit AdScales(const VeltoHeavyAdLimits& limits) : limits_(limits) {}

  // The limits that have been crossed since the last look, each once for an ad, and none once it was touched.
  std::vector<VeltoAdExcess> add(const Look& look);
  void touched() { touched_ = true; }
  const VeltoAdWeight& weight() const { return weight_; }
  bool isKnown() const { return weight_.processorSeconds || weight_.networkBytes; }

 private:
  // Processor time over a while that moves along.
  class Recent {
   public:
    explicit Recent(double span) : span_(span) {}
    void add(double seconds, double used);
    double used() const { return looks_.empty() ? 0 : looks_.back().second - looks_.front().second; }
    void clear() { looks_.clear(); }

   private:
    const double span_;  // seconds
    std::deque<std::pair<double, double>> looks_;
  };

  struct Sums {
    void add(const WebPageUse& before, const WebPageUse& now);
    VeltoAdWeight weight;
    double memory = 0;  // by which the process has grown by now
  };

  const VeltoHeavyAdLimits limits_;
  VeltoAdWeight weight_;
  // Of the time in which it was alone; and with that in which others were in its process, for good. Limits hold for the
  // latter: it cannot be told whose work it was, but a page that costs too much is not to hide among others.
  Sums own_, together_;
  std::optional<Look> first_, last_;
  Recent peak_{30}, unseen_{10};
  std::set<VeltoAdLimit> told_;
  bool touched_ = false;
};

}  // namespace velto
