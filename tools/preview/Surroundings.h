// What velto-preview stands on: a folder for everything it writes, a display when there is none, a desktop whose
// applications open nothing.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>

namespace velto::preview {

class Surroundings {
 public:
  // Before GTK starts: the environment is set for it. Throws UsageError when a display is needed and cannot
  // be had, such as one that real events can be sent to (`taps`): Wayland is none. Stored pictures go to the
  // folder "pictures" in `out`; "" keeps none.
  Surroundings(const std::string& out, bool taps);
  explicit Surroundings(
      const std::string& text);  // the same once more, in a child of the process that made them
  Surroundings(const Surroundings&) = delete;
  Surroundings& operator=(const Surroundings&) = delete;
  void remove() const;  // at the end, when nobody uses them any more

  std::string text() const;
  const std::filesystem::path& folder() const { return folder_; }
  bool hasOwnDisplay() const { return server_ != 0; }  // nobody looks at it

 private:
  void startDisplay();
  void quietDesktop(const std::filesystem::path& pictures);

  std::filesystem::path folder_;
  pid_t server_ = 0;
};

// The web engine of this process runs without its sandbox from here on: said on standard error. Before GTK starts.
void leaveSandbox();

}  // namespace velto::preview
