// Which of an ad's files to play (VAST 4.2, 2.3.4 and 3.9.1). A pure function; any thread.
#pragma once

#include "velto/Export.h"
#include "velto/vast/VASTCreative.h"

#include <functional>
#include <optional>
#include <vector>

namespace velto {

struct VASTSurroundings {
  // Whether the player can play such a file, by type and codec; none: it can play all.
  std::function<bool(const VASTMediaFile&)> canPlay = {};
  // Whether that is known for certain; none: it is. Other files are tried last.
  std::function<bool(const VASTMediaFile&)> surelyPlays = {};
  double width = 0, height = 0;          // of the view, in pixels; 0: not known
  std::optional<double> bandwidth = {};  // kilobits a second; nothing: not known
  // Files by http are left out, where pages or policy forbid them.
  bool onlySecure = false;
};

// The files that can be played, in the order in which to try them: first those that surely play, then those that come in time, then by how well they fill
// the view without being larger than need be, then by https, bitrate and the document's own order. Programs are left out.
VELTO_EXPORT std::vector<VASTMediaFile> chooseVASTMedia(const std::vector<VASTMediaFile>& files,
                                                        const VASTSurroundings& surroundings);

}  // namespace velto
