// What a video ad's servers are told when it fails: the numbers that [ERRORCODE] stands for (VAST 4.2, 2.3.6.3). Values.
#pragma once

#include <cstdint>

namespace velto {

enum class VASTError : uint16_t {
  NotXML = 100,
  NotVAST = 101,  // XML, but what must be there is not
  VersionNotSupported = 102,

  Trafficking = 200,  // an ad of a kind that is not played here
  WrongLinearity = 201,
  WrongDuration = 202,
  WrongSize = 203,
  CategoryMissing = 204,  // a wrapper blocks categories, and the ad does not say its own
  CategoryBlocked = 205,
  BreakShortened = 206,

  Wrapper = 300,         // any other fault of a wrapper
  WrapperTimeout = 301,  // its address was not reached, or did not answer in time
  WrapperLimit = 302,    // one too many, or one that leads back to itself
  NoAdsAfterWrapper = 303,
  NotShownInTime = 304,

  Linear = 400,  // any other fault of a linear ad
  FileNotFound = 401,
  FileTimeout = 402,
  NoSupportedFile = 403,  // none of the media files can be played here
  FileNotShown = 405,     // it should have played, and did not
  InteractiveNotRun = 409,
  VerificationNotRun = 410,

  Companion = 600,
  CompanionNotFetched = 603,

  Undefined = 900,
  VPAID = 901,
};

}  // namespace velto
