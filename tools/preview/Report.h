// What a run leaves for others to read: the findings, and with a folder for it the pages and files about them. It listens from
// before the ad is loaded until finish(). Main thread.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "preview/Arguments.h"
#include "preview/Findings.h"
#include "preview/Journal.h"
#include "preview/Network.h"
#include "preview/Player.h"
#include "preview/Probe.h"
#include "preview/Screen.h"
#include "preview/Story.h"

namespace velto::preview {

class VideoAdWatch;

// Until a video ad has ended, at most a minute and a half.
void awaitEnd(Screen& screen);

class Report {
 public:
  // `base` is the address that the creative's own files have. Throws UsageError when the baseline cannot be read or the
  // folder cannot be made.
  Report(const Arguments& arguments, const std::string& base, Screen& screen, Journal& journal);
  Report(const Report&) = delete;
  Report& operator=(const Report&) = delete;

  // What listens to a video ad, which outlives this.
  VideoAdWatch* videoAd = nullptr;

  // Plays the ad as somebody would who looks at it, for at most ten seconds, and less when its page rests: looks, touches a
  // banner, and looks at what came of it. A video ad is played to its end.
  void show(Player& player);
  // Of now, for steps that expect none.
  bool hasFinding(const std::string& id);
  // Looks at the page for the last time, and tells the findings. The exit code.
  int finish(bool fine);

 private:
  void heard(const Entry& entry);
  void photograph(const std::string& name);
  void paint(const std::string& file);
  bool hasSettled() const;
  void settle();
  void showVideoAd();
  std::string pictureFolder() const;
  bool hasGone() const;

  const Arguments& arguments_;
  Screen& screen_;
  Journal& journal_;
  Story story_;
  Tolerance tolerance_;
  Network network_;
  Probe probe_;
  double startedAt_;         // seconds since 1970
  std::string lastPicture_;  // its bytes
  std::string lastStep_;
  int pictures_ = 0;
  double stateSince_ = 0;  // milliseconds
  bool wasJudged_ = true;  // of the last picture
  bool wasInView_ = false;
  bool isOver_ = false;
  std::shared_ptr<bool> lives_ = std::make_shared<bool>(true);
};

}  // namespace velto::preview
