// What the application reports of a session's ad. One object a session; main thread.
#pragma once

#include "velto/measurement/OMIDVelto.h"

#include <memory>

namespace velto {

class OMIDVeltoAdSession;
class OMIDVeltoVASTProperties;

class OMIDVeltoAdEvents {
 public:
  // Null, with an error, for a session that has them already or has finished, and without session.
  static std::shared_ptr<OMIDVeltoAdEvents> initWithAdSession(
      const std::shared_ptr<OMIDVeltoAdSession>& session, OMIDVeltoErrorResult error);

  // Starts a session that was not started. An error when the page reports the impression, when it has been
  // reported, or after the finish.
  bool impressionOccurredWithError(OMIDVeltoErrorResult error);
  // The same errors. Before the start it is kept, and told right after it.
  bool loadedWithError(OMIDVeltoErrorResult error);
  bool loadedWithVastProperties(const std::shared_ptr<const OMIDVeltoVASTProperties>& vastProperties,
                                OMIDVeltoErrorResult error);

 private:
  explicit OMIDVeltoAdEvents(std::shared_ptr<OMIDVeltoAdSession> session);

  std::shared_ptr<OMIDVeltoAdSession> session_;
};

}  // namespace velto
