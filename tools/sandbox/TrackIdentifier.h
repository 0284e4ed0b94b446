// Reads the identifier of install and click tracks: a text of colon-separated fields, wrapped twice, each
// time as three random characters followed by base64 in lines of 64 characters. The server uses it to record
// and check tracks.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velto::sandbox {

struct TrackIdentifier {
  std::string text;  // the unwrapped text
  std::string time;  // seconds since 1970
  std::string os;
  std::string version;  // of the library
  // Name, os, version, product, model, locale, language, operator, boot time, time.
  std::vector<std::string> device;
  std::string arguments;  // installs: the key; clicks: banner, publisher and order separated by ":"
};

// Reads an identifier. Whatever is wrong is appended to problems; the result is absent if the wrapping cannot
// be undone, and holds only the text if that has too few fields.
std::optional<TrackIdentifier> readTrackIdentifier(std::string_view identifier,
                                                   std::vector<std::string>& problems);

// The inverse of one wrapping, for clients of the sandbox that make their own tracks: prefix, then base64 of
// the text.
std::string wrapTrackText(std::string_view prefix, std::string_view text);

}  // namespace velto::sandbox
