// See Hand.h.
#include "Hand.h"

#include <velto/gtk/views/ScreenPart.h>

#include <stdexcept>

namespace demo {

void Hand::click(velto::CGPoint point) {
  GtkNative* native = gtk_widget_get_native(content_);
  double x = 0;
  double y = 0;
  gtk_native_get_surface_transform(native, &x, &y);
  graphene_point_t inContent = GRAPHENE_POINT_INIT(float(point.x), float(point.y));
  graphene_point_t inWindow;
  if (!gtk_widget_compute_point(content_, GTK_WIDGET(native), &inContent, &inWindow))
    throw std::runtime_error("the point to click on is in no window");
  act({"mousemove", "--window", window(), std::to_string(int(x + inWindow.x)),
       std::to_string(int(y + inWindow.y)), "click", "1"});
}

void Hand::giveKeyboard() {
  act({"windowmap", "--sync", window(), "windowfocus", "--sync", window()});
}

void Hand::press(const std::string& key) {
  act({"windowfocus", "--sync", window(), "key", key});
}

std::string Hand::window() const {
  const unsigned long number = velto::gtk::x11WindowOf(content_);
  if (!number) throw std::runtime_error("a hand needs an X11 window");
  return std::to_string(number);
}

void Hand::act(std::vector<std::string> words) {
  words.insert(words.begin(), "xdotool");
  std::vector<const char*> command;
  for (const auto& word : words) command.push_back(word.c_str());
  command.push_back(nullptr);
  GError* error = nullptr;
  GSubprocess* hand = g_subprocess_newv(command.data(), G_SUBPROCESS_FLAGS_NONE, &error);
  if (hand && g_subprocess_wait_check(hand, nullptr, &error)) return g_object_unref(hand);
  g_clear_object(&hand);
  const std::string reason = error->message;
  g_error_free(error);
  throw std::runtime_error("xdotool: " + reason);
}

}  // namespace demo
