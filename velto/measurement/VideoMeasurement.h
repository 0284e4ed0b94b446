// What is measured of one video ad: what can be seen of it, and its Open Measurement session with the scripts that its
// document names. Made by the ad's player, which is in a library of its own (velto::vast). Main thread.
#pragma once

#include "velto/Export.h"
#include "velto/measurement/OMIDVelto.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace velto {

class OMIDVeltoAdEvents;
class OMIDVeltoAdSession;
class OMIDVeltoMediaEvents;
class UIView;
class ViewabilityWatcher;

class VELTO_EXPORT VideoMeasurement {
 public:
  struct Script {
    std::string url, vendor, parameters;
  };
  struct Seen {
    int percent = 0;  // of the view
    bool away =
        false;  // nobody can see it: it is hidden or in no window, its window minimised, the device locked
    bool measurable = true;  // false: what is seen cannot be told
  };
  enum class Event : uint8_t {
    FirstQuartile,
    Midpoint,
    ThirdQuartile,
    Complete,
    Pause,
    Resume,
    BufferStart,
    BufferFinish,
    Skipped,
    Click
  };

  // Looks from now on. `changed` is called when what is seen is another: at most every 200 ms.
  VideoMeasurement(std::shared_ptr<UIView> view, std::function<void()> changed);
  VideoMeasurement(const VideoMeasurement&) = delete;
  VideoMeasurement& operator=(const VideoMeasurement&) = delete;
  ~VideoMeasurement();  // finishes

  Seen seen() const;
  // Views over the ad that belong to it.
  void addControls(const std::shared_ptr<UIView>& view);

  // Whether such a script can run here.
  static bool canRun(const Script& script);
  // Begins the session; nothing without scripts that can run. The ad has loaded by then. `lost` hears, later, of each of the
  // scripts that cannot be loaded, by its place among them; nothing: of all.
  void start(const std::vector<Script>& scripts, std::optional<double> skipOffset, OMIDVeltoPosition position,
             std::function<void(std::optional<size_t> script)> lost = nullptr);
  void impression();
  void started(double duration, float volume);  // seconds; 0 … 1
  void volumeChanged(float volume);
  void setFullscreen(bool fullscreen);
  void tell(Event event);
  void finish();

  // "name/version", as macros of ads tell it.
  static std::string partner();

 private:
  std::shared_ptr<UIView> view_;
  std::vector<std::shared_ptr<UIView>> controls_;
  std::shared_ptr<ViewabilityWatcher> watcher_;
  std::shared_ptr<OMIDVeltoAdSession> session_;
  std::shared_ptr<OMIDVeltoAdEvents> adEvents_;
  std::shared_ptr<OMIDVeltoMediaEvents> mediaEvents_;
};

}  // namespace velto
