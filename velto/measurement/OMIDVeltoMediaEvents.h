// What the application reports of the playback of a session's ad. One object a session, made before it
// starts; main thread. Each call is an error while the session does not run.
#pragma once

#include "velto/measurement/OMIDVelto.h"
#include "velto/platform/foundation/JSON.h"

#include <memory>

namespace velto {

class OMIDVeltoAdSession;

class OMIDVeltoMediaEvents {
 public:
  // Null, with an error, for a session that has them already, was started, or whose media events are not the
  // application's; and without session.
  static std::shared_ptr<OMIDVeltoMediaEvents> initWithAdSession(
      const std::shared_ptr<OMIDVeltoAdSession>& session, OMIDVeltoErrorResult error);

  // Duration in seconds; volumes from 0 to 1, all others are errors.
  bool startWithDuration(float duration, float mediaPlayerVolume, OMIDVeltoErrorResult error = nullptr);
  bool volumeChangeTo(float mediaPlayerVolume, OMIDVeltoErrorResult error = nullptr);
  bool firstQuartile(OMIDVeltoErrorResult error = nullptr) { return tell("firstQuartile", error); }
  bool midpoint(OMIDVeltoErrorResult error = nullptr) { return tell("midpoint", error); }
  bool thirdQuartile(OMIDVeltoErrorResult error = nullptr) { return tell("thirdQuartile", error); }
  bool complete(OMIDVeltoErrorResult error = nullptr) { return tell("complete", error); }
  bool pause(OMIDVeltoErrorResult error = nullptr) { return tell("pause", error); }
  bool resume(OMIDVeltoErrorResult error = nullptr) { return tell("resume", error); }
  bool bufferStart(OMIDVeltoErrorResult error = nullptr) { return tell("bufferStart", error); }
  bool bufferFinish(OMIDVeltoErrorResult error = nullptr) { return tell("bufferFinish", error); }
  bool skipped(OMIDVeltoErrorResult error = nullptr) { return tell("skipped", error); }
  bool playerStateChangeTo(OMIDVeltoPlayerState state, OMIDVeltoErrorResult error = nullptr);
  bool adUserInteractionWithType(OMIDVeltoInteractionType type, OMIDVeltoErrorResult error = nullptr);

 private:
  explicit OMIDVeltoMediaEvents(std::shared_ptr<OMIDVeltoAdSession> session);
  bool mayReport(OMIDVeltoErrorResult error) const;
  bool tell(const char* event, OMIDVeltoErrorResult error);
  bool tell(const char* event, const char* key, const char* value, OMIDVeltoErrorResult error);
  bool tellVolume(const char* event, float volume, const JSON::Object& data, OMIDVeltoErrorResult error);

  std::shared_ptr<OMIDVeltoAdSession> session_;
};

}  // namespace velto
