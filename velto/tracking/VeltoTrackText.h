// The text of a track's identifier: who, when, on what device, wrapped so that it travels as one opaque word.
// Made by VeltoTrackerManager; any thread.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace velto::VeltoTrackText {

// A device value without the characters that separate fields.
std::string sanitized(std::string_view value);
// The device at that time (seconds since 1970).
std::string _deviceIdentifier(double now);
// The identifier of an event with these arguments, now.
std::string _identifierForArgs(const std::string& arguments);
// Three random letters or digits, then the bytes as base64 in lines of 64 characters (RFC 2045 without its
// last line end). Empty for what is not UTF-8.
std::string wrapped(std::string_view text);

// The format with each "%@" or "%.0f" replaced by the next value.
std::string filled(std::string_view format, const std::vector<std::string>& values);

}  // namespace velto::VeltoTrackText
