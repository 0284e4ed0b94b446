// Media events on their way to the service.
#include "velto/measurement/OMIDVeltoMediaEvents.h"

#include "velto/measurement/OMIDVeltoAdSession.h"
#include "velto/measurement/OMIDVeltoSDK.h"

#include <cmath>

namespace velto {
namespace {

std::string textOf(const JSON& value) {
  return writeJSON(value, false).value_or("null");
}

// As a person would write the number: a float's 0.3 is no 0.300000012 to a script.
double rounded(float value) {
  constexpr double precision = 1e6;
  return std::round(static_cast<double>(value) * precision) / precision;
}

}  // namespace

std::shared_ptr<OMIDVeltoMediaEvents> OMIDVeltoMediaEvents::initWithAdSession(
    const std::shared_ptr<OMIDVeltoAdSession>& session, OMIDVeltoErrorResult error) {
  const auto fail = [error](OMIDVeltoErrorCode code, const char* text) {
    OMIDVeltoFail(error, code, text);
    return nullptr;
  };
  if (!session) return fail(OMIDVeltoErrorInvalidArgument, "There is no session");
  if (session->configuration().mediaEventsOwner != OMIDVeltoOwnerNative)
    return fail(OMIDVeltoErrorWrongOwner, "The media events are not the application's");
  if (session->isStarted() || session->isFinished() || !session->claimMediaEvents())
    return fail(OMIDVeltoErrorInvalidState, "The session was started, or has its media events");
  return std::shared_ptr<OMIDVeltoMediaEvents>(new OMIDVeltoMediaEvents(session));
}

OMIDVeltoMediaEvents::OMIDVeltoMediaEvents(std::shared_ptr<OMIDVeltoAdSession> session)
    : session_(std::move(session)) {}

bool OMIDVeltoMediaEvents::mayReport(OMIDVeltoErrorResult error) const {
  return session_->isStarted() ||
         OMIDVeltoFail(error, OMIDVeltoErrorInvalidState, "The session does not run");
}

bool OMIDVeltoMediaEvents::tell(const char* event, OMIDVeltoErrorResult error) {
  if (!mayReport(error)) return false;
  session_->call("media", textOf(event));
  return true;
}

bool OMIDVeltoMediaEvents::tell(const char* event, const char* key, const char* value,
                                OMIDVeltoErrorResult error) {
  if (!mayReport(error)) return false;
  if (!value) return OMIDVeltoFail(error, OMIDVeltoErrorInvalidArgument, "No such state or type");
  session_->call("media", textOf(event) + "," + textOf(JSON::Object{{key, value}}));
  return true;
}

bool OMIDVeltoMediaEvents::tellVolume(const char* event, float volume, const JSON::Object& data,
                                      OMIDVeltoErrorResult error) {
  if (!mayReport(error)) return false;
  if (!(volume >= 0 && volume <= 1))
    return OMIDVeltoFail(error, OMIDVeltoErrorInvalidArgument, "A volume lies between 0 and 1");
  session_->call("mediaVolume", textOf(event) + "," + textOf(rounded(volume)) + "," +
                                    textOf(OMIDVeltoSDK::sharedInstance()->deviceVolume()) + "," +
                                    textOf(data));
  return true;
}

bool OMIDVeltoMediaEvents::startWithDuration(float duration, float mediaPlayerVolume,
                                             OMIDVeltoErrorResult error) {
  JSON::Object data;
  if (std::isfinite(duration)) data["duration"] = rounded(duration);  // of an endless stream nothing is known
  return tellVolume("start", mediaPlayerVolume, data, error);
}

bool OMIDVeltoMediaEvents::volumeChangeTo(float mediaPlayerVolume, OMIDVeltoErrorResult error) {
  return tellVolume("volumeChange", mediaPlayerVolume, {}, error);
}

bool OMIDVeltoMediaEvents::playerStateChangeTo(OMIDVeltoPlayerState state, OMIDVeltoErrorResult error) {
  return tell("playerStateChange", "state", OMIDVeltoName(state), error);
}

bool OMIDVeltoMediaEvents::adUserInteractionWithType(OMIDVeltoInteractionType type,
                                                     OMIDVeltoErrorResult error) {
  return tell("adUserInteraction", "interactionType", OMIDVeltoName(type), error);
}

}  // namespace velto
