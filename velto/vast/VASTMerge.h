// How what wrappers tell is told of the ad inside them (VAST 4.2, 2.4.4 and 3.19). Inner header of this folder; any thread.
#pragma once

#include "velto/vast/VASTAd.h"

#include <cstddef>

namespace velto {

// How much one ad may get from all the wrappers around it. Of a list no more than a document may have of it.
inline constexpr size_t mostVASTBytesOfWrappers = size_t{1} << 20U;

// Trackings, clicks and icons of the one also for the other. Of a programme that has an icon already, none is added. What
// does not fit into `room`, which shrinks, is left out.
void addVASTLinear(VASTLinear& to, const VASTLinear& from, size_t& room);

// What the wrapper is told is told with the ad, too, and what it lacks it gets from there. From the innermost wrapper outwards.
void addVASTWrapper(VASTAd& ad, const VASTAd& wrapper, size_t& room);

}  // namespace velto
