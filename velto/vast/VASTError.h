// What a video ad's servers are told when it fails: the numbers that [ERRORCODE] stands for (VAST 4.2, 2.3.6.3). All that
// arise here; docs/vast.md tells of each when. Values.
#pragma once

#include <cstdint>

namespace velto {

enum class VASTError : uint16_t {
  NotXML = 100,
  NotVAST = 101,  // XML, but what must be there is not
  VersionNotSupported = 102,

  Trafficking = 200,  // an ad of another kind than video: it has nothing but companions
  WrongLinearity = 201,
  WrongDuration = 202,
  CategoryMissing = 204,  // a wrapper blocks categories, and the ad does not say its own
  CategoryBlocked = 205,
  BreakShortened = 206,  // the ads were ended before its turn came

  Wrapper = 300,         // any other fault of a wrapper
  WrapperTimeout = 301,  // its address was not reached, or did not answer in time
  WrapperLimit = 302,    // one too many, or one that leads back to itself
  NoAdsAfterWrapper = 303,
  NotShownInTime = 304,

  Linear = 400,  // any other fault of a linear ad: nothing on this machine plays files
  FileNotFound = 401,
  FileTimeout = 402,
  NoSupportedFile = 403,     // none of the media files can be played here
  FileNotShown = 405,        // it should have played, and did not
  InteractiveNotRun = 409,   // a program beside the file; that plays
  VerificationNotRun = 410,  // a script that measures; the ad plays

  CompanionRequired = 602,  // one that must be shown with the ad, and cannot be
  CompanionNotFetched = 603,
  CompanionNotSupported = 604,  // it has no form that can be shown here
};

}  // namespace velto
