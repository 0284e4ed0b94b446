// The one session of the platform.
#include "velto/platform/AVAudioSession.h"

#include "velto/platform/Platform.h"

namespace velto {

AVAudioSession& AVAudioSession::sharedInstance() {
  return Platform::current().audioSession();
}

}  // namespace velto
