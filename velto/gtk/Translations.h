// The library's own words in the user's language. Any thread.
#pragma once

namespace velto::gtk {

// The text itself where there is no translation; for the life of the process.
const char* translated(const char* text);

}  // namespace velto::gtk
