// How report.html looks.
#pragma once

namespace velto::preview {

extern const char reportStyle[];

}  // namespace velto::preview
