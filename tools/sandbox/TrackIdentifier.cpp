// See TrackIdentifier.h.
#include "sandbox/TrackIdentifier.h"

#include <algorithm>
#include <cctype>

#include "sandbox/Text.h"

namespace velto::sandbox {

namespace {

constexpr std::size_t kPrefixLength = 3;
constexpr std::size_t kLineLength = 64;
constexpr std::size_t kDeviceFields = 10;

// Undoes one wrapping; `where` names it in the problem.
std::optional<std::string> unwrap(std::string_view wrapped, const char* where,
                                  std::vector<std::string>& problems) {
  const auto refuse = [&](const std::string& what) {
    problems.push_back(std::string("track identifier, ") + where + " wrapping: " + what);
    return std::nullopt;
  };
  const std::string_view prefix = wrapped.substr(0, kPrefixLength);
  const bool alphanumeric = std::all_of(
      prefix.begin(), prefix.end(), [](char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0; });
  if (prefix.size() < kPrefixLength || !alphanumeric)
    return refuse("does not begin with three letters or digits");

  const std::vector<std::string> lines = split(wrapped.substr(kPrefixLength), "\r\n");
  for (const std::string& line : lines) {
    if (&line != &lines.back() && line.size() != kLineLength) {
      return refuse("a line that is not the last has " + std::to_string(line.size()) +
                    " characters, expected 64");
    }
  }
  if (lines.back().empty() || lines.back().size() > kLineLength) {
    return refuse("the last line has " + std::to_string(lines.back().size()) +
                  " characters, expected 1 to 64");
  }
  std::optional<std::string> text = base64Decode(join(lines, ""));
  if (!text) return refuse("not base64 in lines separated by CR LF");
  return text;
}

void checkFields(const std::vector<std::string>& fields, const TrackIdentifier& track,
                 std::vector<std::string>& problems) {
  const auto expect = [&](bool holds, const std::string& what) {
    if (!holds) problems.push_back("track identifier: " + what);
  };
  expect(fields[0] == "3", "first field is \"" + fields[0] + "\", expected \"3\"");
  expect(fields[2] == "3", "third field is \"" + fields[2] + "\", expected \"3\"");
  expect(isDigits(track.time), "time \"" + track.time + "\" is not a whole number of seconds");
  expect(!track.os.empty(), "the operating system is empty");
  expect(!track.version.empty(), "the library version is empty");
  expect(track.device.size() == kDeviceFields,
         "the device has " + std::to_string(track.device.size()) + " fields, expected 10");
  if (track.device.size() != kDeviceFields) return;
  expect(isDigits(track.device[8]), "boot time \"" + track.device[8] + "\" is not a whole number of seconds");
  expect(track.device[9] == track.time, "the device's time \"" + track.device[9] + "\" is not the track's");
  expect(track.device[1] == track.os,
         "the device's operating system \"" + track.device[1] + "\" is not the track's");
}

}  // namespace

std::optional<TrackIdentifier> readTrackIdentifier(std::string_view identifier,
                                                   std::vector<std::string>& problems) {
  const std::optional<std::string> inner = unwrap(identifier, "outer", problems);
  if (!inner) return std::nullopt;
  std::optional<std::string> text = unwrap(*inner, "inner", problems);
  if (!text) return std::nullopt;

  TrackIdentifier track;
  track.text = std::move(*text);
  // The device holds no colon, the arguments may: everything behind the sixth colon belongs to them.
  std::vector<std::string> fields = split(track.text, ":");
  if (fields.size() < 7) {
    problems.push_back("track identifier: " + std::to_string(fields.size()) +
                       " fields separated by \":\", expected at least 7");
    return track;
  }
  track.time = fields[1];
  track.os = fields[3];
  track.version = fields[4];
  track.device = split(fields[5], "|");
  track.arguments = join({fields.begin() + 6, fields.end()}, ":");
  checkFields(fields, track, problems);
  return track;
}

std::string wrapTrackText(std::string_view prefix, std::string_view text) {
  const std::string encoded = base64Encode(text);
  std::string wrapped(prefix);
  for (std::size_t start = 0; start < encoded.size(); start += kLineLength) {
    if (start > 0) wrapped += "\r\n";
    wrapped += encoded.substr(start, kLineLength);
  }
  return wrapped;
}

}  // namespace velto::sandbox
