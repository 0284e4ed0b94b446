// Pictures: decoded once, to be sure that they are some, and stored as they came.
#include "velto/gtk/media/Photos.h"

#include "velto/platform/foundation/GMemory.h"
#include "velto/platform/foundation/NSURL.h"
#include "velto/platform/foundation/Text.h"

#include <fcntl.h>
#include <gdk-pixbuf/gdk-pixbuf.h>
#include <unistd.h>

#include <map>

namespace velto::gtk {
namespace {

constexpr int64_t mostPixels = 100'000'000;
constexpr size_t longestFileName = 100;  // bytes, without extension
constexpr int mostNumbers = 10'000;

// Sizes are known before anything is decoded; without a size nothing is.
void onSizePrepared(GdkPixbufLoader* loader, int width, int height, gpointer) noexcept {
  if (static_cast<int64_t>(width) * height > mostPixels) gdk_pixbuf_loader_set_size(loader, 0, 0);
}

bool writeAll(int file, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = write(file, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    bytes.remove_prefix(static_cast<size_t>(written));
  }
  return true;
}

std::filesystem::path picturesFolder() {
  const char* chosen = g_get_user_special_dir(G_USER_DIRECTORY_PICTURES);
  return chosen ? std::filesystem::path(chosen) : std::filesystem::path(g_get_home_dir()) / "Pictures";
}

}  // namespace

std::optional<std::string> imageExtension(const std::string& bytes) {
  // Drawings (SVG) are documents, which may do more than show a picture.
  static const std::map<std::string, std::string> extensions{
      {"png", "png"}, {"jpeg", "jpg"}, {"gif", "gif"},   {"webp", "webp"},
      {"bmp", "bmp"}, {"tiff", "tif"}, {"avif", "avif"}, {"jxl", "jxl"}};
  const auto loader = GPtr<GdkPixbufLoader>::adopt(gdk_pixbuf_loader_new());
  g_signal_connect(loader.get(), "size-prepared", G_CALLBACK(onSizePrepared), nullptr);
  const bool written =
      gdk_pixbuf_loader_write(loader, reinterpret_cast<const guchar*>(bytes.data()), bytes.size(), nullptr);
  const bool closed = gdk_pixbuf_loader_close(loader, nullptr);
  auto* format = gdk_pixbuf_loader_get_format(loader);
  if (!written || !closed || !format || !gdk_pixbuf_loader_get_pixbuf(loader)) return std::nullopt;
  const GText name(gdk_pixbuf_format_get_name(format));
  const auto known = extensions.find(name.get());
  return known == extensions.end() ? std::nullopt : std::optional(known->second);
}

std::string pictureName(const std::string& address, const std::string& extension) {
  const auto url = NSURL::URLWithString(address);
  std::string path = url ? url->path() : "";
  const GText decoded(g_uri_unescape_string(path.c_str(), "/"));
  if (decoded && g_utf8_validate(decoded.get(), -1, nullptr)) path = decoded.get();
  std::string name = path.substr(path.rfind('/') + 1);
  name.resize(std::min(name.rfind('.'), name.size()));
  std::string clean;
  for (const char c : name)
    clean += g_ascii_isalnum(c) || static_cast<unsigned char>(c) >= 0x80 || strchr("-_ ().", c) ? c : '_';
  clean.erase(0, clean.find_first_not_of(". "));
  size_t length = std::min(clean.size(), longestFileName);
  while (length > 0 && length < clean.size() && (static_cast<unsigned char>(clean[length]) & 0xC0) == 0x80)
    --length;
  clean.resize(length);
  return (clean.empty() ? "picture" : clean) + "." + extension;
}

bool writePicture(const std::filesystem::path& folder, const std::string& name, const std::string& bytes) {
  if (g_mkdir_with_parents(folder.c_str(), 0777) != 0) return false;
  const std::filesystem::path wanted(name);
  for (int number = 0; number < mostNumbers; ++number) {
    const auto suffix = number == 0 ? "" : " (" + std::to_string(number) + ")";
    const auto path = folder / (wanted.stem().string() + suffix + wanted.extension().string());
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666);
    if (file < 0 && errno == EEXIST) continue;
    if (file < 0) return false;
    const bool written = writeAll(file, bytes);
    if (close(file) == 0 && written) return true;
    unlink(path.c_str());
    return false;
  }
  return false;
}

void Photos::UIImageWriteToSavedPhotosAlbum(std::string bytes, std::string address,
                                            std::function<void(bool)> completion) {
  background_.perform(
      [this, bytes = std::move(bytes), address = std::move(address), completion = std::move(completion)] {
        bool written = false;
        if (status_ == AuthorizationStatusAuthorized)
          if (const auto extension = imageExtension(bytes))
            written = writePicture(picturesFolder(), pictureName(address, *extension), bytes);
        if (completion) mainQueue_.post([completion, written] { completion(written); });
      });
}

}  // namespace velto::gtk
