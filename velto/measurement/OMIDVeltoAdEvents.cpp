// Impression and loaded.
#include "velto/measurement/OMIDVeltoAdEvents.h"

#include "velto/measurement/OMIDVeltoAdSession.h"
#include "velto/measurement/OMIDVeltoVASTProperties.h"

namespace velto {

std::shared_ptr<OMIDVeltoAdEvents> OMIDVeltoAdEvents::initWithAdSession(
    const std::shared_ptr<OMIDVeltoAdSession>& session, OMIDVeltoErrorResult error) {
  if (!session) {
    OMIDVeltoFail(error, OMIDVeltoErrorInvalidArgument, "There is no session");
    return nullptr;
  }
  if (session->isFinished() || !session->claimAdEvents()) {
    OMIDVeltoFail(error, OMIDVeltoErrorInvalidState, "The session has finished, or has its ad events");
    return nullptr;
  }
  return std::shared_ptr<OMIDVeltoAdEvents>(new OMIDVeltoAdEvents(session));
}

OMIDVeltoAdEvents::OMIDVeltoAdEvents(std::shared_ptr<OMIDVeltoAdSession> session)
    : session_(std::move(session)) {}

bool OMIDVeltoAdEvents::impressionOccurredWithError(OMIDVeltoErrorResult error) {
  return session_->impressionOccurred(error);
}

bool OMIDVeltoAdEvents::loadedWithError(OMIDVeltoErrorResult error) {
  return session_->loaded({}, error);
}

bool OMIDVeltoAdEvents::loadedWithVastProperties(
    const std::shared_ptr<const OMIDVeltoVASTProperties>& vastProperties, OMIDVeltoErrorResult error) {
  if (!vastProperties) return OMIDVeltoFail(error, OMIDVeltoErrorInvalidArgument, "There are no properties");
  return session_->loaded(vastProperties->json(), error);
}

}  // namespace velto
