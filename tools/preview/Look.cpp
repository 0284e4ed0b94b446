// Counting colours.
#include "preview/Look.h"

#include <gdk/gdk.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <set>
#include <vector>

namespace velto::preview {
namespace {

constexpr double closeRegion = 50;  // points, at the top right
constexpr size_t mostColours = 256;

struct Pixels {
  int width = 0, height = 0;
  std::vector<uint32_t> data;
};

Pixels read(const std::string& file) {
  Pixels pixels;
  GdkTexture* texture = gdk_texture_new_from_filename(file.c_str(), nullptr);
  if (!texture) return pixels;
  pixels.width = gdk_texture_get_width(texture);
  pixels.height = gdk_texture_get_height(texture);
  pixels.data.resize(static_cast<size_t>(pixels.width) * static_cast<size_t>(pixels.height));
  gdk_texture_download(texture, reinterpret_cast<guchar*>(pixels.data.data()),
                       static_cast<gsize>(pixels.width) * sizeof(uint32_t));
  g_object_unref(texture);
  // Where nothing is painted the window's white is seen; colours come multiplied by their opacity.
  for (auto& colour : pixels.data) colour += (0xff - (colour >> 24)) * 0x010101;
  return pixels;
}

// Relative luminance, 0 … 1.
double luminance(uint32_t colour) {
  const auto part = [colour](int shift) {
    const double value = ((colour >> shift) & 0xff) / 255.0;
    return value <= 0.03928 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
  };
  return 0.2126 * part(16) + 0.7152 * part(8) + 0.0722 * part(0);
}

template <class Each>
void eachPixel(const Pixels& pixels, const CGRect& place, double scale, Each each) {
  const auto from = [scale](double value) { return std::max(0, static_cast<int>(std::ceil(value * scale))); };
  const auto to = [scale](double value, int most) {
    return std::min(most, static_cast<int>(std::floor(value * scale)));
  };
  const int right = to(place.origin.x + place.size.width, pixels.width);
  const int bottom = to(place.origin.y + place.size.height, pixels.height);
  for (int y = from(place.origin.y); y < bottom; ++y)
    for (int x = from(place.origin.x); x < right; ++x)
      each(pixels.data[static_cast<size_t>(y) * static_cast<size_t>(pixels.width) + static_cast<size_t>(x)]);
}

}  // namespace

std::optional<Look> lookAt(const std::string& file, const CGRect& ad, double screenWidth) {
  const auto pixels = read(file);
  if (pixels.width == 0 || screenWidth <= 0) return std::nullopt;
  const double scale = pixels.width / screenWidth;
  std::set<uint32_t> colours;
  eachPixel(pixels, ad, scale, [&](uint32_t colour) {
    if (colours.size() < mostColours) colours.insert(colour);
  });
  if (colours.empty()) return std::nullopt;
  double lightest = 0, darkest = 1;
  const CGRect close{{ad.origin.x + ad.size.width - closeRegion, ad.origin.y}, {closeRegion, closeRegion}};
  std::set<uint32_t> seen;  // the luminance of a colour is worked out once
  eachPixel(pixels, close, scale, [&](uint32_t colour) {
    if (!seen.insert(colour).second) return;
    lightest = std::max(lightest, luminance(colour));
    darkest = std::min(darkest, luminance(colour));
  });
  Look look{static_cast<int>(colours.size()), 1};
  if (!seen.empty()) look.closeContrast = std::round((lightest + 0.05) / (darkest + 0.05) * 10) / 10;
  return look;
}

}  // namespace velto::preview
