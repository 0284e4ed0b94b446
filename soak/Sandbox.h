// The ad server of a run: velto-sandbox in a process of its own, with all its scenarios, and the library pointed at it.
#pragma once

#include <memory>
#include <string>

#include "../tests/support/Folder.h"
#include "../tests/support/Program.h"

namespace velto::soak {

class Sandbox {
 public:
  // Throws std::runtime_error when it does not start.
  explicit Sandbox(const std::string& program, const std::string& served = {});  // files of that folder
  // Installs the platform, whose store is in a folder of this object's.
  void install() const;
  std::string store() const { return folder_.path("store"); }
  // It answers nobody until it goes on.
  void holdUp() const { process_->signal(SIGSTOP); }
  void goOn() const { process_->signal(SIGCONT); }

 private:
  test::TemporaryFolder folder_;
  std::unique_ptr<test::Process> process_;
  std::string address_;
};

// The keys and endpoints that its scenarios know. The first key's ad comes in any case.
inline constexpr const char* sandboxKeys[] = {
    "good",     "plain", "mraid",  "mediation", "nofill-page", "error",   "notfound", "nosize", "cut",
    "cut-page", "short", "drops",  "late",      "slow",        "unknown", "failing",  "nofill", "passback",
    "monetize", "chain", "itself", "empty",     "spin",        "leak",    "unseen"};
inline constexpr const char* sandboxEndpoints[] = {"refuse", "wrong-name", "expired", "untrusted"};

}  // namespace velto::soak
