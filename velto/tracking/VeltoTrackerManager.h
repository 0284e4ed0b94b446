// Reports installs and clicks to the tracking server. Each event becomes an opaque
// identifier text, which stays in the store until the server acknowledged it: it
// is sent at once, and after that once in each later run of the application.
//
// The static operations are called by VeltoDataStore, VeltoFramework
// and the controllers. All else happens on the main thread.
#pragma once

#include "velto/platform/Handle.h"
#include "velto/platform/NSTimer.h"
#include "velto/platform/NSURLSession.h"
#include "velto/platform/NSUserDefaults.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <unordered_set>

namespace velto {

// The shapes of an identifier's text (time, system, version, device, arguments), of an install's arguments,
// and the name under which an install waits in the store.
inline constexpr char VeltoTrackIdentifier[] = "3:%.0f:3:%@:%@:%@:%@";
inline constexpr char VeltoTrackArg[] = "%@";
inline constexpr char VeltoTrackTypeId[] = "install";

enum VeltoTrackType : uint64_t {
  VeltoTrackTypeUnknown = 0,
  VeltoTrackTypeInstall = 1,
  VeltoTrackTypeClick = 2,
};

class VeltoTrackerManager {
 public:
  using Identifiers = std::unordered_set<std::string>;

  // The one of the installed platform. Main thread: making it starts polling.
  static std::shared_ptr<VeltoTrackerManager> shared();
  // Any thread; from another than the main one it takes effect in a later turn of the main queue.
  static void start();
  // Any thread. The event is in the store when this returns. Nothing is tracked without a publisher key.
  static void trackInstall();
  // A click counts only when all three identifiers are known. Main thread.
  static void trackClickForBannerId(const std::optional<std::string>& bannerId,
                                    const std::optional<std::string>& publisherId,
                                    const std::optional<std::string>& ordId);

  // Any thread.
  static std::string installIdentifierForVeltoKey(const std::string& key);
  static std::string clickIdentifierForBannerId(const std::string& bannerId, const std::string& publisherId,
                                                const std::string& ord);

  VeltoTrackerManager();
  VeltoTrackerManager(const VeltoTrackerManager&) = delete;
  VeltoTrackerManager& operator=(const VeltoTrackerManager&) = delete;
  ~VeltoTrackerManager();

  // A pending event that is none of these.
  std::optional<std::string> getNextTrackIdentifierExcept(const Identifiers& identifiers);
  VeltoTrackType getTrackTypeFromTrackIdenfier(const std::string& identifier);
  void storeTrackIdentifier(const std::string& identifier, VeltoTrackType trackType);
  void deleteTrackIdentifier(const std::string& identifier);
  // The completion comes in a later turn of the main queue with whether
  // the server acknowledged; never for a type that has no request.
  void taskWithTrackInstall(const std::string& identifier, VeltoTrackType trackType,
                            std::function<void(bool success)> completionHandler);

  void _startPollingService();
  void _stopPollingService();
  void _pollingTimerPerformed();
  void _sendTrackIdentifier(const std::string& identifier, VeltoTrackType trackType, bool toBeStored);

 private:
  // Pending events: identifier to the name of its type. Read from the store on first use.
  DefaultsDictionary& identifiers();
  // The first pending event in order, from that one on, that is none of these.
  std::optional<std::string> nextFrom(const std::string& start, const Identifiers& except);
  void _appendIdentifier(const std::string& identifier, VeltoTrackType trackType);
  void _performSendTrackIdentifier(const std::string& identifier, VeltoTrackType trackType);
  void _taskWithRequest(NSURLRequest request, std::function<void(bool success)> completionHandler);
  void _willEnterForeground() { _startPollingService(); }
  void _didEnterBackground();
  void _keepWhatWasRefused();
  void save(const std::string& identifier, const std::optional<std::string>& type);
  void storeUnsaved();

  std::optional<DefaultsDictionary> identifiers_;
  std::map<std::string, std::optional<std::string>> unsaved_;  // changes that the store refused
  Identifiers identifierInProgress_;  // sent in this run of the application and not acknowledged
  std::string polledUpTo_;            // pending events up to it are in progress
  std::unique_ptr<NSTimer> pollingTimer_;
  Handle foregroundObserver_;
  Handle backgroundObserver_;
  Handle endObserver_;
  std::shared_ptr<VeltoTrackerManager*> self_;  // completions hold it weakly
};

}  // namespace velto
