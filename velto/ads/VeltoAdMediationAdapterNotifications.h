// What an adapter of another ad network announces. Main thread.
#pragma once

namespace velto {

// Posted by an adapter with itself as the object.
inline constexpr char constNotificationAdMobAdapterGADBannerReady[] =
    "constNotificationAdMobAdapterGADBannerReadyVelto";
inline constexpr char constNotificationAdMobAdapterGADInterstitialReady[] =
    "constNotificationAdMobAdapterGADInterstitialReadyVelto";
inline constexpr char constNotificationAdMobAdapterGADInterstitialError[] =
    "constNotificationAdMobAdapterGADInterstitialErrorVelto";

}  // namespace velto
