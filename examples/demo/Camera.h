// Takes pictures of a widget as GTK draws it, web content included, for the tour to look at and to keep.
#pragma once

#include <gtk/gtk.h>
#include <velto/platform/Geometry.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <vector>

namespace demo {

// 0xRRGGBB.
using Color = uint32_t;

class Picture {
 public:
  Picture() = default;
  explicit Picture(GdkTexture* texture);  // takes the reference over

  int width() const { return width_; }
  int height() const { return height_; }
  std::optional<Color> at(double x, double y) const;  // nothing outside
  // Whether a rectangle with a frame of that color (2 points, inside) stands exactly there.
  bool shows(const velto::CGRect& frame, Color color) const;
  // The column after the last pixel of that color in a row; nothing when there is none.
  std::optional<int> rightEnd(int row, Color color) const;
  // The first and the last column in which a row is of another color; nothing when it is all of that one.
  struct Columns {
    int first;
    int last;
  };
  std::optional<Columns> otherThan(Color color, int row) const;
  // The largest of the smallest color components: 0xff where something white is drawn.
  int brightest(const velto::CGRect& frame) const;
  bool save(const std::filesystem::path& file) const;

 private:
  std::shared_ptr<GdkTexture> texture_;
  int width_ = 0;
  int height_ = 0;
  std::vector<uint32_t> pixels_;
};

class Camera {
 public:
  explicit Camera(GtkWidget* widget) : widget_(widget) {}
  // The widget as it was last drawn; empty before it is shown.
  Picture take() const;

 private:
  GtkWidget* widget_;
  mutable std::shared_ptr<GdkPaintable> window_;  // keeps what was drawn last while the next is not there yet
};

}  // namespace demo
