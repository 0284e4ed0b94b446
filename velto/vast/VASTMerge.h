// How what wrappers tell is told of the ad inside them (VAST 4.2, 2.4.4 and 3.19). Inner header of this folder; any thread.
#pragma once

#include "velto/vast/VASTAd.h"

namespace velto {

// Trackings, clicks and icons of the one also for the other. Of a programme that has an icon already, none is added.
void addVASTLinear(VASTLinear& to, const VASTLinear& from);

// What the wrapper is told is told with the ad, too, and what it lacks it gets from there. From the innermost wrapper outwards.
void addVASTWrapper(VASTAd& ad, const VASTAd& wrapper);

}  // namespace velto
