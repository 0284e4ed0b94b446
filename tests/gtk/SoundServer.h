// A sound server of a test's own, with two outputs that nobody hears: "first" and "second".
#pragma once

#include <glib.h>
#include <signal.h>
#include <sys/wait.h>

#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

namespace velto::test {

// It can be used once its socket is there.
class SoundServer {
 public:
  explicit SoundServer(const std::filesystem::path& socket) {
    const std::string load = "module-native-protocol-unix auth-anonymous=1 socket=" + socket.string();
    std::vector<std::string> words{"pulseaudio",
                                   "-n",
                                   "--daemonize=no",
                                   "--exit-idle-time=-1",
                                   "--use-pid-file=no",
                                   "--load=module-null-sink sink_name=first",
                                   "--load=module-null-sink sink_name=second",
                                   "--load=" + load};
    std::vector<char*> line;
    for (auto& word : words) line.push_back(word.data());
    line.push_back(nullptr);
    constexpr auto flags = static_cast<GSpawnFlags>(G_SPAWN_SEARCH_PATH | G_SPAWN_DO_NOT_REAP_CHILD |
                                                    G_SPAWN_STDERR_TO_DEV_NULL | G_SPAWN_STDOUT_TO_DEV_NULL);
    if (!g_spawn_async(nullptr, line.data(), nullptr, flags, nullptr, nullptr, &process_, nullptr))
      throw std::runtime_error("no pulseaudio");
  }
  ~SoundServer() { stop(); }
  void stop() {
    if (!process_) return;
    kill(process_, SIGTERM);
    waitpid(process_, nullptr, 0);
    process_ = 0;
  }

 private:
  GPid process_ = 0;
};

}  // namespace velto::test
