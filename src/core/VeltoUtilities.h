// Small facts that several rooms share.
#pragma once

namespace velto {

class VeltoUtilities {
 public:
  // Whether the host application linked and registered the adapter "VeltoAdMediationAdapterAdMob". Any
  // thread.
  static bool isGoogleAdMobAvailable();

  // The property of the audio session whose changes the controllers watch.
  static constexpr const char* keypathVolumeObserver = "outputVolume";
};

}  // namespace velto
