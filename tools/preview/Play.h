// One creative from its server to its end: the library is installed, the ad loaded, the steps played, and all of it let go.
// Called once in the working process, after the surroundings were made; main thread.
#pragma once

#include <future>
#include <memory>
#include <vector>

#include "preview/Arguments.h"
#include "preview/Creative.h"
#include "preview/Steps.h"
#include "preview/Surroundings.h"

namespace velto::sandbox {
class Server;
}

namespace velto::preview {

class ListeningPlatform;
class Screen;

class Play {
 public:
  // Reads the creative. Throws UsageError when that cannot be had.
  Play(const Arguments& arguments, const std::vector<Step>& steps, const Surroundings& surroundings);
  Play(const Play&) = delete;
  Play& operator=(const Play&) = delete;
  ~Play();

  // The exit code. Throws UsageError when nothing could be played: no display, no web engine.
  int run();

 private:
  void serve();
  void offer(const Creative& creative);  // from now on
  void install();
  std::string change(Screen& screen, const std::string& creative);
  int watch();  // the ad's life in the library; the exit code

  const Arguments& arguments_;
  const std::vector<Step>& steps_;
  const Surroundings& surroundings_;
  std::unique_ptr<Creative> creative_;  // null: a video ad
  struct Document {
    std::string source, text;
    double duration = 0;  // of its coming, milliseconds
  };
  Document fetch(const std::string& source) const;
  Document document_;
  ListeningPlatform* platform_ = nullptr;  // of a video ad
  std::future<void> leaving_;              // the end of what was played before
  std::unique_ptr<sandbox::Server> server_;
};

}  // namespace velto::preview
