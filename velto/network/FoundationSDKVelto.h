// Small extensions of text and colour. Any thread.
#pragma once

#include "velto/platform/UIColor.h"
#include "velto/platform/foundation/Patterns.h"
#include "velto/platform/foundation/Text.h"

#include <chrono>
#include <cmath>
#include <optional>
#include <string>

namespace velto {

namespace MD5SDKVelto {
// RFC 1321 digest of the text's bytes, as 32 lowercase hexadecimal digits.
inline std::string md5Velto(const std::string& text) {
  return md5Hex(text);
}
}  // namespace MD5SDKVelto

namespace DateFormatterSDKVelto {
// A date-time as rich-media calendar events carry it: 2024-05-01T10:30[:00]+02:00. Nothing for anything else.
inline std::optional<std::chrono::sys_seconds> parseMRAIDDate(const std::string& text) {
  return parseDateTime(text);
}
}  // namespace DateFormatterSDKVelto

namespace SDKVelto {

// Red, green and blue each moved by delta, at most 1 and with no floor; a colour without components stays as
// it is.
inline UIColor _adjust(const UIColor& color, double delta) {
  const auto parts = color.components();
  if (!parts) return color;
  const auto moved = [delta](double component) { return std::min(component + delta, 1.0); };
  return UIColor({moved(parts->red), moved(parts->green), moved(parts->blue), parts->alpha});
}
inline UIColor lighter(const UIColor& color, double amount) {
  return _adjust(color, std::abs(amount));
}
inline UIColor darker(const UIColor& color, double amount) {
  return _adjust(color, -std::abs(amount));
}

}  // namespace SDKVelto
}  // namespace velto
