// Events by xdotool.
#include "preview/Hand.h"

#include "velto/gtk/views/ScreenPart.h"

#include <cstdlib>
#include <initializer_list>
#include <optional>
#include <vector>

#include "preview/Player.h"

namespace velto::preview {
namespace {

using Words = std::vector<std::string>;

constexpr char noWindow[] = "taps need a shown X11 window";
constexpr int stepsOfSwipe = 8;

// "mousemove" there, or nothing where the display takes none.
std::optional<Words> moveTo(GtkWidget* widget, CGPoint point) {
  GtkNative* native = gtk_widget_get_native(widget);
  const unsigned long number = gtk::x11WindowOf(widget);
  const graphene_point_t inWidget =
      GRAPHENE_POINT_INIT(static_cast<float>(point.x), static_cast<float>(point.y));
  graphene_point_t inWindow;
  if (!number || !gtk_widget_compute_point(widget, GTK_WIDGET(native), &inWidget, &inWindow))
    return std::nullopt;
  double x = 0;
  double y = 0;
  gtk_native_get_surface_transform(native, &x, &y);
  const int scale = gtk_widget_get_scale_factor(widget);
  return Words{"mousemove", "--window", std::to_string(number),
               std::to_string(static_cast<int>((x + inWindow.x) * scale)),
               std::to_string(static_cast<int>((y + inWindow.y) * scale))};
}

std::string run(const Words& words) {
  std::vector<const char*> line{"xdotool"};
  for (const auto& word : words) line.push_back(word.c_str());
  line.push_back(nullptr);
  GError* error = nullptr;
  GSubprocess* hand = g_subprocess_newv(line.data(), G_SUBPROCESS_FLAGS_NONE, &error);
  if (!hand) {
    const std::string reason = error->message;
    g_error_free(error);
    return reason;
  }
  bool done = false;
  const auto ended = +[](GObject*, GAsyncResult*, gpointer flag) { *static_cast<bool*>(flag) = true; };
  g_subprocess_wait_async(hand, nullptr, ended, &done);
  while (!done) g_main_context_iteration(nullptr, TRUE);
  const bool succeeded = g_subprocess_get_successful(hand);
  g_object_unref(hand);
  if (!succeeded) return "xdotool failed";
  runFor(std::chrono::milliseconds(50));  // the page hears of it a little later
  return {};
}

void append(Words& words, std::initializer_list<std::string> more) {
  words.insert(words.end(), more);
}

std::string withWords(std::optional<Words> words, std::initializer_list<std::string> more) {
  if (!words) return noWindow;
  append(*words, more);
  return run(*words);
}

}  // namespace

std::string tapAt(GtkWidget* widget, CGPoint point) {
  return withWords(moveTo(widget, point), {"click", "1"});
}

std::string pressAt(GtkWidget* widget, CGPoint point, std::chrono::milliseconds time) {
  const auto seconds = std::to_string(static_cast<double>(time.count()) / 1000);
  return withWords(moveTo(widget, point), {"mousedown", "1", "sleep", seconds, "mouseup", "1"});
}

std::string swipe(GtkWidget* widget, CGPoint from, CGPoint to) {
  auto words = moveTo(widget, from);
  if (!words) return noWindow;
  append(*words, {"mousedown", "1"});
  for (int i = 1; i <= stepsOfSwipe; ++i) {
    const double part = static_cast<double>(i) / stepsOfSwipe;
    const auto move = moveTo(widget, {from.x + (to.x - from.x) * part, from.y + (to.y - from.y) * part});
    append(*words, {"sleep", "0.015"});
    words->insert(words->end(), move->begin(), move->end());
  }
  return withWords(std::move(words), {"mouseup", "1"});
}

std::string scrollAt(GtkWidget* widget, CGPoint point, int clicks) {
  const auto button = clicks < 0 ? "4" : "5";
  return withWords(moveTo(widget, point), {"click", "--repeat", std::to_string(std::abs(clicks)), button});
}

std::string type(GtkWidget* widget, const std::string& text) {
  if (!gtk::x11WindowOf(widget)) return noWindow;
  return run({"type", "--delay", "5", "--", text});
}

}  // namespace velto::preview
