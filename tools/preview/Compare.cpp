// Point by point.
#include "preview/Compare.h"

#include "velto/platform/foundation/GMemory.h"

#include <gtk/gtk.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <optional>
#include <vector>

namespace velto::preview {
namespace {

constexpr int trace = 16;  // of 255: what another version of a font or a filter makes

struct Picture {
  int width = 0, height = 0;
  std::vector<guchar> bytes;  // blue, green, red, alpha
};

std::optional<Picture> read(const std::string& file) {
  const auto source = GPtr<GFile>::adopt(g_file_new_for_path(file.c_str()));
  const auto texture = GPtr<GdkTexture>::adopt(gdk_texture_new_from_file(source, nullptr));
  if (!texture) return std::nullopt;
  Picture picture{gdk_texture_get_width(texture), gdk_texture_get_height(texture), {}};
  const auto stride = static_cast<size_t>(picture.width) * 4;
  picture.bytes.resize(stride * static_cast<size_t>(picture.height));
  gdk_texture_download(texture, picture.bytes.data(), stride);
  return picture;
}

bool write(const Picture& picture, const std::string& file) {
  const GOwned<GBytes, g_bytes_unref> bytes(g_bytes_new(picture.bytes.data(), picture.bytes.size()));
  const auto texture = GPtr<GdkTexture>::adopt(gdk_memory_texture_new(
      picture.width, picture.height, GDK_MEMORY_DEFAULT, bytes.get(), static_cast<gsize>(picture.width) * 4));
  return gdk_texture_save_to_png(texture, file.c_str());
}

}  // namespace

std::string compare(const std::string& file, const std::string& wanted, double tolerance,
                    const std::string& difference) {
  const auto is = read(file), should = read(wanted);
  if (!is || !should) return (is ? wanted : file) + ": cannot be read as a picture";
  if (is->width != should->width || is->height != should->height)
    return "the picture is " + std::to_string(is->width) + "x" + std::to_string(is->height) + ", not " +
           std::to_string(should->width) + "x" + std::to_string(should->height);
  Picture shown = *is;
  size_t differing = 0;
  for (size_t at = 0; at < is->bytes.size(); at += 4) {
    int most = 0;
    for (size_t i = at; i < at + 4; ++i) {
      most = std::max(most, std::abs(is->bytes[i] - should->bytes[i]));
      shown.bytes[i] = static_cast<guchar>(255 - (510 - is->bytes[i] - should->bytes[i]) / 8);
    }
    if (most <= trace) continue;
    ++differing;
    constexpr std::array<guchar, 4> red{0, 0, 220, 255};
    std::copy(red.begin(), red.end(), shown.bytes.begin() + static_cast<std::ptrdiff_t>(at));
  }
  const double share = 400.0 * static_cast<double>(differing) / static_cast<double>(is->bytes.size());
  if (share <= tolerance) return {};
  const bool written = write(shown, difference);
  return std::to_string(differing) + " points (" + std::to_string(std::ceil(share * 100) / 100).substr(0, 5) +
         " %) differ" + (written ? ": see " + difference : "");
}

}  // namespace velto::preview
