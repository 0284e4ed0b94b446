// Whether two pictures look the same.
#pragma once

#include <string>

namespace velto::preview {

// One line about how they differ, or nothing. The tolerance is the share of points, in percent, that may differ by more
// than a trace; where it is passed, `difference` is written: both pictures faint, in red what differs.
std::string compare(const std::string& file, const std::string& wanted, double tolerance,
                    const std::string& difference);

}  // namespace velto::preview
