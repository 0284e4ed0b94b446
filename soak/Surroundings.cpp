// Signals, settings, clicks.
#include "Surroundings.h"

#include <gtk/gtk.h>
#ifdef GDK_WINDOWING_X11
#include <gdk/x11/gdkx.h>
#endif

#include <csignal>
#include <string>

#include "Account.h"

namespace velto::soak {
namespace {

constexpr char pageProcess[] = "WebKitWebProces", networkProcess[] = "WebKitNetworkPr";
constexpr char hears[] = "ReceiveQueue";  // the thread on which it hears the application

// One of the engine's of that name, or nobody. Not one that starts: the engine waits for its first word, and ends the
// application without it.
pid_t oneOf(Dice& dice, const std::string& name) {
  std::vector<pid_t> found;
  for (const auto& process : descendants())
    if (process.name.starts_with(name) && hasThread(process.id, hears)) found.push_back(process.id);
  return found.empty() ? 0 : found[static_cast<size_t>(drawn(dice, static_cast<int>(found.size())))];
}

void set(const char* property, bool value) {
  g_object_set(gtk_settings_get_default(), property, static_cast<gboolean>(value), nullptr);
}

void setScale([[maybe_unused]] int scale) {
#ifdef GDK_WINDOWING_X11
  auto* display = gdk_display_get_default();
  G_GNUC_BEGIN_IGNORE_DEPRECATIONS
  if (GDK_IS_X11_DISPLAY(display)) {
    // The toolkit resizes all its surfaces with that, also one of a window that was closed and of which an event is still on
    // the way: the server answers that with an error, which ends the program.
    gdk_x11_display_error_trap_push(display);
    gdk_x11_display_set_surface_scale(display, scale);
    gdk_x11_display_error_trap_pop_ignored(display);
  }
  G_GNUC_END_IGNORE_DEPRECATIONS
#endif
}

void setResolution(int dotsPerInch) {
  g_object_set(gtk_settings_get_default(), "gtk-xft-dpi", dotsPerInch * 1024, nullptr);
}

}  // namespace

void Surroundings::killPage() {
  const auto process = oneOf(dice_, pageProcess);
  if (process && kill(process, SIGKILL) == 0) ++deaths_.pages;
}

void Surroundings::hangPage() {
  const auto process = oneOf(dice_, pageProcess);
  if (!process || kill(process, SIGSTOP) != 0) return;
  ++deaths_.hangs;
  stopped_.push_back({process, 5 + drawn(dice_, 100)});
}

void Surroundings::killNetwork() {
  const auto process = oneOf(dice_, networkProcess);
  if (process && kill(process, SIGKILL) == 0) ++deaths_.networks;
}

void Surroundings::stopServer() {
  sandbox_.holdUp();
  ++deaths_.outages;
  stopped_.push_back({0, 1 + drawn(dice_, 40)});
}

void Surroundings::changeLook() {
  switch (drawn(dice_, 4)) {
    case 0:
      return set("gtk-application-prefer-dark-theme", drawn(dice_, 2) == 0);
    case 1:
      return set("gtk-enable-animations", drawn(dice_, 2) == 0);
    case 2:
      return setResolution(drawn(dice_, 2) == 0 ? 96 : 144);
    default:
      return setScale(1 + drawn(dice_, 2));
  }
}

// Wherever that is: an ad, a close button, a link. Windows stand in the display's corner.
void Surroundings::click() {
  const std::string command = "xdotool mousemove " + std::to_string(drawn(dice_, 900)) + " " +
                              std::to_string(drawn(dice_, 700)) + " click 1";
  g_spawn_command_line_async(command.c_str(), nullptr);
}

// A process that has ended is still this one's child, or nobody's: its number was not given to another.
void Surroundings::goOn(const Stopped& stopped) const {
  if (stopped.process == 0) return sandbox_.goOn();
  for (const auto& process : descendants())
    if (process.id == stopped.process) kill(process.id, SIGCONT);
}

void Surroundings::step() {
  std::erase_if(stopped_, [this](Stopped& stopped) {
    if (--stopped.steps > 0) return false;
    goOn(stopped);
    return true;
  });
}

void Surroundings::settle() {
  for (const auto& stopped : stopped_) goOn(stopped);
  stopped_.clear();
  sandbox_.goOn();
  set("gtk-application-prefer-dark-theme", false);
  set("gtk-enable-animations", true);
  setResolution(96);
  setScale(1);
}

}  // namespace velto::soak
