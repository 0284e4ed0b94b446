// Small facts that several subsystems share. Any thread.
#pragma once

#include <string>

namespace velto {

class VeltoUtilities {
 public:
  // Whether the host application linked and registered the adapter "VeltoAdMediationAdapterAdMob".
  static bool isGoogleAdMobAvailable();

  // What the library tells of itself when ads are measured, the verification script of native sessions (which
  // no page brings along), and the engine's activation.
  static std::string omsdkPartnerName();
  static std::string omsdkVendorKey();
  static std::string omsdkVerificationScriptURL();
  static std::string omsdkVerificationParameters();
  static bool isOMSDKActive();
  static void activateOMSDK();

  // The property of the audio session whose changes the controllers watch.
  static constexpr const char* keypathVolumeObserver = "outputVolume";
};

}  // namespace velto
