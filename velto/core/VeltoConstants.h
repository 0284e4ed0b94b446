// The library's public constants: versions, identifiers, enumerations and the sentinels for "not set".
#pragma once

#include <cstdint>

namespace velto {

inline constexpr char kVeltoSDKVersion[] = "4.0.10";
inline constexpr double VeltoFrameworkVersionNumber = 1.0;
inline constexpr char VeltoFrameworkVersionString[] =
    "@(#)PROGRAM:VeltoFramework  PROJECT:VeltoFramework-1\n";
inline constexpr char constVeltoBundleIdentifier[] = "com.velto.VeltoFramework";
inline constexpr char constVeltoResourcesBundleName[] = "VeltoFrameworkResources";
inline constexpr char constVeltoVersionStringKey[] = "CFBundleShortVersionString";
inline constexpr char constAppName[] = "CFBundleName";

// Posted when an ad locks or releases the orientation; VeltoFramework::getUIInterfaceOrientationMaskFrom
// reads it.
inline constexpr char VeltoNotificationUIInterfaceOrientationMaskLock[] =
    "VeltoNotificationUIInterfaceOrientationMaskLock";

// "Not set", and a second one for where -23 is taken.
inline constexpr int64_t VeltoSettingNoValue = -23;
inline constexpr int64_t VeltoSettingNoValueSecond = -24;

// Enumerations are plain integers underneath: the server's words are looked up by them, and a value past a
// list's end makes the request fail instead of being bent into shape.
enum VeltoGender : int64_t {
  VeltoGenderNoValue = -23,
  VeltoGenderMale = 0,
  VeltoGenderFemale = 1,
  VeltoGenderOther = 2,
};

enum VeltoMarital : int64_t {
  VeltoMaritalNoValue = -23,
  VeltoMaritalSingle = 0,
  VeltoMaritalLivingCommon = 1,
  VeltoMaritalMarried = 2,
  VeltoMaritalDivorced = 3,
  VeltoMaritalWidowed = 4,
};

enum VeltoAdType : uint64_t {
  VeltoAdTypeNotValid = 0,
  VeltoAdTypeBanner = 1,
  VeltoAdTypeInterstitial = 2,
};

// What a banner asks the server for, in points; the ad itself says how large it is.
enum VeltoBannerSize : int64_t {
  VeltoBannerSizeInterstitial = -23,
  VeltoBannerSizeSmart = 0,  // adapts to the screen's width
  VeltoBannerSize320x50 = 1,
  VeltoBannerSize728x90 = 2,
  VeltoBannerSize300x250 = 3,
};

// Where a banner stands in its container. Any other value is accepted and pins nothing.
enum VeltoBannerPosition : int64_t {
  VeltoBannerPositionResized = -24,
  VeltoBannerPositionFullScreen = -23,
  VeltoBannerPositionTop = 0,
  VeltoBannerPositionBottom = 1,
  VeltoBannerPositionLocation = 2,
};

// What stands in a banner's place.
enum VeltoBannerState : int64_t {
  VeltoBannerStateEmpty = 0,
  VeltoBannerStateLoading = 1,  // nothing yet, but a request or a page is under way
  VeltoBannerStateShown = 2,    // also while a refresh is under way
  VeltoBannerStateExpanded = 3,
  VeltoBannerStateResized = 4,
};

enum VeltoInterstitialState : int64_t {
  VeltoInterstitialStateEmpty = 0,
  VeltoInterstitialStateLoading = 1,
  VeltoInterstitialStateReady = 2,      // also while another is on its way
  VeltoInterstitialStatePresented = 3,  // from show until it has gone again
};

// What becomes of an ad that harms the device (VeltoAdWeight.h).
enum VeltoHeavyAdPolicy : int64_t {
  VeltoHeavyAdPolicyReport = 0,       // its timeline and the figures tell
  VeltoHeavyAdPolicyPauseUnseen = 1,  // and while nobody sees it, what it plays stands still at once
  VeltoHeavyAdPolicyReplace = 2,      // and it is taken out: the next refresh brings another
};

// How an ad comes in.
enum VeltoAnimation : int64_t {
  VeltoAnimationNone = 0,
  VeltoAnimationRandom = 1,  // one of those below
  VeltoAnimationFromLeft = 2,
  VeltoAnimationFromLeftWithSpring = 3,
  VeltoAnimationFromRight = 4,
  VeltoAnimationFromRightWithSpring = 5,
};

}  // namespace velto
