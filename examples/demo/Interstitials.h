// The demo's interstitials: what there is to show, and the one that is being shown. The stage makes it and
// hears from it what the delegate hears. Main thread.
#pragma once

#include <velto/velto.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace demo {

// One thing to show. Its key tells the sandbox what to answer.
struct InterstitialCase {
  std::string name;
  std::string label;
  velto::VeltoAnimation animation = velto::VeltoAnimationNone;
  std::string key = "demo";
  bool autoShow = false;
  bool loadsNext = false;  // while it is on the screen, for the moment it has gone
};

class Interstitials {
 public:
  using Heard = std::function<void(const std::string& name, const std::string& what)>;

  static const std::vector<InterstitialCase>& cases();

  Interstitials(std::shared_ptr<velto::UIViewController> host, Heard heard)
      : host_(std::move(host)), heard_(std::move(heard)) {}

  // Loads the case's ad, and shows it when it is ready. One that is still there is taken off. The name must
  // be one of cases().
  void open(const std::string& name);
  void clear() { current_.reset(); }

 private:
  class Delegate;
  const std::shared_ptr<velto::UIViewController> host_;
  const Heard heard_;
  std::shared_ptr<Delegate> current_;
};

}  // namespace demo
