// The scripts that are built into the library: mraid/mraid.js and measurement/omsdk-v1.js, each bundled with the modules
// beside it and minified (cmake/embed-resources.py). The platforms' library bundles answer with them. Any thread.
#pragma once

#include "velto/Export.h"

#include <optional>
#include <string_view>

namespace velto {

// The text of a script by its file name ("mraid.js"), for the life of the process; nothing when there is none.
VELTO_EXPORT std::optional<std::string_view> resourceText(std::string_view name);

}  // namespace velto
