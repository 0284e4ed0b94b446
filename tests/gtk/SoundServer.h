// A sound server of a test's own, with two outputs that nobody hears: "first" and "second".
#pragma once

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <filesystem>
#include <utility>

#include "../support/MainLoop.h"
#include "../support/Program.h"

namespace velto::test {

inline sockaddr_un soundAddress(const std::string& path) {
  sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
  if (path.size() >= sizeof address.sun_path) throw std::runtime_error("no room for " + path);
  path.copy(address.sun_path, path.size());
  return address;
}

// This process uses it from then on.
class SoundServer {
 public:
  SoundServer() : process_({"sh", "-c", command()}) {
    if (!runUntil(answers)) throw std::runtime_error("no sound");
    g_setenv("PULSE_SERVER", ("unix:" + path()).c_str(), TRUE);
  }
  void stop() {
    process_.signal(SIGTERM);
    process_.exitCode();
  }

 private:
  static std::string path() { return std::filesystem::temp_directory_path() / "sound"; }
  // Its socket is there before anybody listens to it.
  static bool answers() {
    const int call = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const auto address = soundAddress(path());
    const bool taken = connect(call, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    close(call);
    return taken;
  }
  static std::string command() {
    return "exec pulseaudio -n --daemonize=no --exit-idle-time=-1 --use-pid-file=no"
           " --load='module-null-sink sink_name=first' --load='module-null-sink sink_name=second'"
           " --load='module-native-protocol-unix auth-anonymous=1 socket=" +
           path() + "' >/dev/null 2>&1";
  }

  Process process_;
};

// One that takes calls, and says nothing.
class HungSoundServer {
 public:
  HungSoundServer() : socket_(socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0)) {
    const auto path = (std::filesystem::temp_directory_path() / "silence").string();
    const auto address = soundAddress(path);
    if (bind(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        listen(socket_, 8) != 0)
      throw std::runtime_error("no socket at " + path);
    g_setenv("PULSE_SERVER", ("unix:" + path).c_str(), TRUE);
  }
  ~HungSoundServer() { hangUp(); }

  bool isAsked() {
    if (call_ < 0) call_ = accept4(socket_, nullptr, nullptr, SOCK_CLOEXEC);
    return call_ >= 0;
  }
  void hangUp() {
    for (int* open : {&call_, &socket_})
      if (const int descriptor = std::exchange(*open, -1); descriptor >= 0) close(descriptor);
  }

 private:
  int socket_, call_ = -1;
};

}  // namespace velto::test
