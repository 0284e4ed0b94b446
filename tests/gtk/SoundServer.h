// A sound server of a test's own, with two outputs that nobody hears: "first" and "second".
#pragma once

#include <filesystem>

#include "../support/MainLoop.h"
#include "../support/Program.h"

namespace velto::test {

// This process uses it from then on.
class SoundServer {
 public:
  SoundServer() : process_({"sh", "-c", command()}) {
    if (!runUntil([] { return std::filesystem::exists(socket()); })) throw std::runtime_error("no sound");
    g_setenv("PULSE_SERVER", ("unix:" + socket()).c_str(), TRUE);
  }
  void stop() {
    process_.signal(SIGTERM);
    process_.exitCode();
  }

 private:
  static std::string socket() { return std::filesystem::temp_directory_path() / "sound"; }
  static std::string command() {
    return "exec pulseaudio -n --daemonize=no --exit-idle-time=-1 --use-pid-file=no"
           " --load='module-null-sink sink_name=first' --load='module-null-sink sink_name=second'"
           " --load='module-native-protocol-unix auth-anonymous=1 socket=" +
           socket() + "' >/dev/null 2>&1";
  }

  Process process_;
};

}  // namespace velto::test
