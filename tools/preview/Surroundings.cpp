// Temporary folder, X server, desktop.
#include "preview/Surroundings.h"

#include <glib.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>

#include "common/Supervise.h"
#include "preview/Arguments.h"

namespace velto::preview {
namespace {

bool isSet(const char* variable) {
  const char* value = g_getenv(variable);
  return value && *value;
}

bool isWayland() {
  return isSet("WAYLAND_DISPLAY") &&
         !(isSet("GDK_BACKEND") && g_str_has_prefix(g_getenv("GDK_BACKEND"), "x11"));
}

}  // namespace

Surroundings::Surroundings(const std::string& out, bool taps) {
  char* made = g_dir_make_tmp("velto-preview-XXXXXX", nullptr);
  if (!made) throw UsageError("no temporary folder can be made");
  folder_ = made;
  g_free(made);
  quietDesktop((out.empty() ? folder_ : std::filesystem::absolute(out)) / "pictures");
  try {
    if ((!isSet("DISPLAY") && !isWayland()) || (taps && isWayland())) startDisplay();
  } catch (const UsageError&) {
    remove();
    throw;
  }
}

Surroundings::Surroundings(const std::string& text) {
  const auto blank = text.find(' ');
  server_ = static_cast<pid_t>(std::strtol(text.c_str(), nullptr, 10));
  folder_ = text.substr(blank + 1);
}

std::string Surroundings::text() const {
  return std::to_string(server_) + " " + folder_.string();
}

void Surroundings::remove() const {
  if (server_ > 0) {
    kill(server_, SIGTERM);
    waitpid(server_, nullptr, 0);
  }
  std::error_code ignored;
  std::filesystem::remove_all(folder_, ignored);
}

// Whatever an ad opens is handed to an application that does nothing; what it was stands in the journal.
void Surroundings::quietDesktop(const std::filesystem::path& pictures) {
  const std::string types =
      "x-scheme-handler/http;x-scheme-handler/https;x-scheme-handler/tel;x-scheme-handler/sms;"
      "x-scheme-handler/mailto;";
  std::filesystem::create_directories(folder_ / "applications");
  std::ofstream(folder_ / "applications/velto-preview-nothing.desktop")
      << "[Desktop Entry]\nType=Application\nName=Nothing\nExec=true %u\nMimeType=" << types << "\n";
  std::ofstream list(folder_ / "mimeapps.list");
  list << "[Default Applications]\n";
  for (const char* scheme : {"http", "https", "tel", "sms", "mailto"})
    list << "x-scheme-handler/" << scheme << "=velto-preview-nothing.desktop\n";
  for (const char* home : {"XDG_DATA_HOME", "XDG_CONFIG_HOME"}) g_setenv(home, folder_.c_str(), TRUE);
  std::ofstream(folder_ / "user-dirs.dirs") << "XDG_PICTURES_DIR=\"" << pictures.string() << "\"\n";
  for (const char* temporary : {"TMPDIR", "PULSE_RUNTIME_PATH"}) g_setenv(temporary, folder_.c_str(), TRUE);
  g_setenv("GTK_A11Y", "none", FALSE);
  // The user's calendar is behind that bus, and stays untouched.
  g_setenv("DBUS_SESSION_BUS_ADDRESS", "disabled:", TRUE);
}

void Surroundings::startDisplay() {
  int numbers[2];
  if (pipe(numbers) != 0) throw UsageError("no pipe can be made");
  server_ = fork();
  if (server_ == 0) {
    tools::endAsUsual();
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    dup2(numbers[1], 3);
    if (!freopen("/dev/null", "w", stderr)) _exit(126);
    execlp("Xvfb", "Xvfb", "-displayfd", "3", "-screen", "0", "2560x2560x24", "-nolisten", "tcp", "-noreset",
           static_cast<char*>(nullptr));
    _exit(127);
  }
  close(numbers[1]);
  std::string number;
  char c = 0;
  while (::read(numbers[0], &c, 1) == 1 && c != '\n') number += c;
  close(numbers[0]);
  if (number.empty()) throw UsageError("there is no display to use, and Xvfb cannot be started");
  g_setenv("DISPLAY", (":" + number).c_str(), TRUE);
  g_unsetenv("WAYLAND_DISPLAY");
  g_setenv("GDK_BACKEND", "x11", TRUE);
  g_setenv("GSK_RENDERER", "cairo", FALSE);
  g_setenv("LIBGL_ALWAYS_SOFTWARE", "1", FALSE);
  g_setenv("WEBKIT_DISABLE_COMPOSITING_MODE", "1", FALSE);
}

void leaveSandbox() {
  g_setenv("WEBKIT_DISABLE_SANDBOX_THIS_IS_DANGEROUS", "1", TRUE);
  std::fputs(
      "velto-preview: warning: without its sandbox the web engine lets the ad do all that you may do\n",
      stderr);
}

}  // namespace velto::preview
