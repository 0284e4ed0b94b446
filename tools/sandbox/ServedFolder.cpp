// See ServedFolder.h.
#include "sandbox/ServedFolder.h"

#include <algorithm>
#include <filesystem>
#include <map>

#include "sandbox/Scenario.h"
#include "sandbox/Server.h"
#include "sandbox/Text.h"

namespace velto::sandbox {

namespace fs = std::filesystem;

namespace {

std::string contentTypeFor(const fs::path& file) {
  static const std::map<std::string, std::string> types = {
      {".html", "text/html"},
      {".htm", "text/html"},
      {".css", "text/css"},
      {".js", "text/javascript"},
      {".json", "application/json"},
      {".txt", "text/plain"},
      {".xml", "text/xml"},
      {".svg", "image/svg+xml"},
      {".png", "image/png"},
      {".jpg", "image/jpeg"},
      {".jpeg", "image/jpeg"},
      {".gif", "image/gif"},
      {".webp", "image/webp"},
      {".mp4", "video/mp4"},
      {".webm", "video/webm"},
      {".ogv", "video/ogg"},
      {".mp3", "audio/mpeg"},
      {".ogg", "audio/ogg"},
      {".wav", "audio/wav"},
      {".mjs", "text/javascript"},
      {".avif", "image/avif"},
      {".ico", "image/x-icon"},
      {".woff", "font/woff"},
      {".woff2", "font/woff2"},
      {".ttf", "font/ttf"},
      {".otf", "font/otf"},
      {".wasm", "application/wasm"},
      {".vtt", "text/vtt"},
      {".m4v", "video/mp4"},
      {".m4a", "audio/mp4"},
      {".mov", "video/quicktime"},
      {".mpd", "application/dash+xml"},
      {".m3u8", "application/vnd.apple.mpegurl"},
  };
  const auto type = types.find(lowerCase(file.extension().string()));
  return type == types.end() ? "application/octet-stream" : type->second;
}

}  // namespace

ServedFolder::ServedFolder(const std::string& folder) {
  if (folder.empty()) return;
  std::error_code fault;
  const fs::path root = fs::canonical(folder, fault);
  if (fault || !fs::is_directory(root)) throw Error(folder + ": no such folder");
  root_ = root.string();
}

std::optional<ServedFile> ServedFolder::find(const std::string& path) const {
  if (root_.empty() || path.find('\0') != std::string::npos) return std::nullopt;
  std::error_code fault;
  const fs::path root(root_);
  const fs::path file = fs::canonical(root / fs::path(path).relative_path(), fault);
  if (fault || std::mismatch(root.begin(), root.end(), file.begin(), file.end()).first != root.end()) {
    return std::nullopt;
  }
  try {
    return ServedFile{readFile(file.string()), contentTypeFor(file)};
  } catch (const Error&) {
    return std::nullopt;
  }
}

}  // namespace velto::sandbox
