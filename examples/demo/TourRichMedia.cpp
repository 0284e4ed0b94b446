// The tour's last part: pages that expand, resize and play a film, and what measurement tells of an ad.
#include "Tour.h"

namespace demo {
namespace {

bool hasSize(const velto::CGRect& frame, double width, double height) {
  return frame.size.width == width && frame.size.height == height;
}

}  // namespace

void Tour::showRichMedia() {
  stage_.clear();
  expandAndClose("expanding");
  expandAndClose("two-part");
  resizeAndClose();
  measure();
  film();
}

// By a tap on the banner, and by one into the corner where every expanded ad can be closed.
void Tour::expandAndClose(const std::string& name) {
  load(name);
  const auto small = stage_.expectedFrame(name, {320, 50});
  expect(name + ": the banner is where it belongs", [&] { return stage_.adFrame(name) == small; });
  const auto content = wholeContent();
  const auto far = [&] { return camera_.take().at(content.maxX() - 20, content.midY()); };
  const auto before = camera_.take().at(20, 20), beforeFar = far();
  hand_.click({small.midX(), small.midY()});
  expect(name + ": the page covers the window",
         [&] { return camera_.take().at(20, 20) != before && far() != beforeFar; });
  const velto::CGRect corner{{content.maxX() - 40, content.minY() + 10}, {30, 30}};
  expect(name + ": and shows where it can be closed",
         [&] { return camera_.take().brightest(corner) > 0xf0; });
  photograph("rich-" + name);
  hand_.click({wholeContent().maxX() - 25, 25});
  expect(name + ": and goes back",
         [&] { return stage_.adFrame(name) == small && camera_.take().at(20, 20) == before; });
}

void Tour::resizeAndClose() {
  const std::string name = "resizing";
  load(name);
  const auto small = stage_.expectedFrame(name, {320, 50});
  const auto above = [&] { return camera_.take().at(small.midX(), small.minY() - 20); };
  const auto before = above();
  hand_.click({small.midX(), small.midY()});
  expect(name + ": the page grows",
         [&] { return hasSize(stage_.adFrame(name), 320, 250) && above() != before; });
  const auto large = stage_.adFrame(name);
  expect(name + ": and shows its button", [&] {
    const auto picture = camera_.take();
    return picture.at(large.minX() + 24, large.minY() + 180) !=
           picture.at(large.minX() + 4, large.minY() + 180);
  });
  photograph("rich-" + name);
  hand_.click({large.midX(), large.minY() + 25});
  expect(name + ": and shrinks again", [&] { return stage_.adFrame(name) == small; });
  stage_.clear();
}

// Whole, half covered by a widget of the application, whole again, and hidden with its window.
void Tour::measure() {
  const std::string name = "measured";
  load(name);
  const auto told = [&](const std::string& what, int times) {
    expect(name + ": " + what, [this, what, times] { return stage_.count("measurement", what) >= times; });
  };
  told("impression 100 %", 1);
  const int whole = stage_.count("measurement", "geometryChange 100 %");
  const auto frame = stage_.adFrame(name);
  // The page paints what it hears a moment later: a bar that fills as much of the ad as is in view.
  const auto paints = [&](double share) {
    expect(name + ": the page shows its share", [&, share] {
      const auto picture = camera_.take();
      const auto isFilled = [&](double x) {
        const double y = frame.maxY() - 10;
        return picture.at(frame.minX() + x * frame.size.width, y) == picture.at(frame.minX() + 10, y);
      };
      return isFilled(share - 0.05) && !isFilled(share + 0.05);
    });
  };
  auto* sheet = gtk_drawing_area_new();
  gtk_drawing_area_set_draw_func(
      GTK_DRAWING_AREA(sheet),
      [](GtkDrawingArea*, cairo_t* canvas, int, int, gpointer) {
        cairo_set_source_rgb(canvas, 0.2, 0.2, 0.25);
        cairo_paint(canvas);
      },
      nullptr, nullptr);
  gtk_widget_set_halign(sheet, GTK_ALIGN_START);
  gtk_widget_set_valign(sheet, GTK_ALIGN_START);
  gtk_widget_set_margin_start(sheet, int(frame.minX()));
  gtk_widget_set_margin_top(sheet, int(frame.minY()));
  gtk_widget_set_size_request(sheet, int(frame.size.width), int(frame.size.height / 2));
  gtk_overlay_add_overlay(GTK_OVERLAY(stage_.content()), sheet);
  told("geometryChange 50 % obstructed", 1);
  paints(0.5);
  photograph("measured-half");
  gtk_overlay_remove_overlay(GTK_OVERLAY(stage_.content()), sheet);
  told("geometryChange 100 %", whole + 1);
  paints(1);
  photograph("measured-whole");

  // A window manager would minimise it; to the ad it is the same.
  gtk_widget_set_visible(GTK_WIDGET(stage_.window()), FALSE);
  expect(name + ": nothing of it is seen", [this] {
    const auto& events = stage_.events();
    return events.back().what.starts_with("geometryChange 0 %");
  });
  gtk_widget_set_visible(GTK_WIDGET(stage_.window()), TRUE);
  hand_.giveKeyboard();
  told("geometryChange 100 %", whole + 2);
  stage_.clear();
}

void Tour::film() {
  const std::string name = "film";
  const int whole = stage_.count("measurement", "geometryChange 100 %");
  open(name);
  expect(name + ": DidAppear", [&] { return stage_.count(name, "DidAppear") == 1; });
  expect(name + ": the page is in sight",
         [&] { return stage_.count("measurement", "geometryChange 100 %") > whole; });
  const auto content = wholeContent();
  const velto::CGPoint button{content.midX(), content.midY() + 15};
  const velto::CGRect around{{button.x - 45, button.y - 45}, {90, 90}};
  expect(name + ": the play button is all there", [&] { return camera_.take().brightest(around) > 0xf0; });
  hand_.click(button);
  for (const char* what : {"start", "firstQuartile"})
    expect(name + ": " + what, [this, what] { return stage_.count("measurement", what) == 1; });
  photograph("film");
  for (const char* what : {"midpoint", "thirdQuartile", "complete"})
    expect(name + ": " + what, [this, what] { return stage_.count("measurement", what) == 1; });
  hand_.click({closeButton().midX(), closeButton().midY()});
  expectGone(name, 1);
}

}  // namespace demo
