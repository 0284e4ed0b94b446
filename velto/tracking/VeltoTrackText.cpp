// Making the identifiers of tracks.
#include "velto/tracking/VeltoTrackText.h"

#include "velto/core/SDKVeltoBundle.h"
#include "velto/network/VeltoDevice.h"
#include "velto/platform/Clock.h"
#include "velto/platform/Platform.h"
#include "velto/platform/UIDevice.h"
#include "velto/platform/foundation/Text.h"
#include "velto/tracking/VeltoTrackerManager.h"

namespace velto::VeltoTrackText {
namespace {

constexpr char deviceFormat[] = "%@|%@|%@|%@|%@|%@|%@|%@|%.0f|%.0f";
constexpr char lettersAndDigits[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
constexpr size_t prefixLength = 3;
constexpr size_t lineLength = 64;

}  // namespace

std::string filled(std::string_view format, const std::vector<std::string>& values) {
  std::string text;
  for (const auto& value : values) {
    const size_t start = format.find('%');
    const size_t end = format.find_first_of("@f", start);
    if (end == std::string_view::npos) break;
    text.append(format.substr(0, start)).append(value);
    format.remove_prefix(end + 1);
  }
  return text.append(format);
}

std::string sanitized(std::string_view value) {
  std::string text;
  text.reserve(value.size());
  for (const char c : value)
    if (c != ':') text += c == '|' ? ' ' : c;
  return text;
}

std::string _deviceIdentifier(double now) {
  std::vector<std::string> values{VeltoDevice::name(),
                                  VeltoDevice::os(),
                                  VeltoDevice::systemVersion(),
                                  VeltoDevice::modelProductName(),
                                  VeltoDevice::model(),
                                  VeltoDevice::locale(),
                                  VeltoDevice::language().value_or(""),
                                  VeltoDevice::simOperatorName().value_or("")};
  for (auto& value : values) value = sanitized(value);
  values.push_back(std::to_string(Platform::current().device().bootTime()));
  values.push_back(fixedDecimals(now, 0));
  return filled(deviceFormat, values);
}

std::string _identifierForArgs(const std::string& arguments) {
  const double now = Platform::current().clock().secondsSince1970();
  const std::string text =
      filled(VeltoTrackIdentifier, {fixedDecimals(now, 0), sanitized(VeltoDevice::os()),
                                    SDKVelto::veltoVersionSDK(), _deviceIdentifier(now), arguments});
  return wrapped(wrapped(text));
}

std::string wrapped(std::string_view text) {
  if (!isValidUTF8(text)) return {};
  const std::string encoded = base64Encode(text);
  std::string result = randomText(lettersAndDigits, prefixLength);
  result.reserve(prefixLength + encoded.size() + encoded.size() / lineLength * 2);
  for (size_t start = 0; start < encoded.size(); start += lineLength) {
    if (start > 0) result += "\r\n";
    result.append(encoded, start, lineLength);
  }
  return result;
}

}  // namespace velto::VeltoTrackText
