// See LinkTrap.h.
#include "LinkTrap.h"

#include <glib.h>

#include <fstream>
#include <stdexcept>

namespace demo {
namespace {

void write(const std::filesystem::path& file, const std::string& text) {
  std::filesystem::create_directories(file.parent_path());
  std::ofstream out(file);
  out << text;
  if (!out.flush()) throw std::runtime_error(file.string() + ": cannot be written");
}

}  // namespace

LinkTrap::LinkTrap() {
  char* folder = g_dir_make_tmp("velto-demo-XXXXXX", nullptr);
  if (!folder) throw std::runtime_error("no temporary folder can be made");
  folder_ = folder;
  g_free(folder);

  const auto browser = folder_ / "browser";
  write(browser, "#!/bin/sh\nprintf '%s\\n' \"$1\" >>'" + (folder_ / "opened").string() + "'\n");
  std::filesystem::permissions(browser, std::filesystem::perms::owner_all);
  write(folder_ / "applications/velto-demo-browser.desktop",
        "[Desktop Entry]\nType=Application\nName=Browser\nExec=" + browser.string() +
            " %u\nMimeType=x-scheme-handler/http;x-scheme-handler/https;x-scheme-handler/tel;\n");
  write(folder_ / "mimeapps.list",
        "[Default Applications]\nx-scheme-handler/http=velto-demo-browser.desktop\n"
        "x-scheme-handler/https=velto-demo-browser.desktop\n"
        "x-scheme-handler/tel=velto-demo-browser.desktop\n");
  for (const char* home : {"XDG_DATA_HOME", "XDG_CONFIG_HOME"}) g_setenv(home, folder_.c_str(), TRUE);
}

LinkTrap::~LinkTrap() {
  std::error_code ignored;
  std::filesystem::remove_all(folder_, ignored);
}

std::vector<std::string> LinkTrap::opened() const {
  std::ifstream in(folder_ / "opened");
  std::vector<std::string> urls;
  for (std::string url; std::getline(in, url);) urls.push_back(url);
  return urls;
}

}  // namespace demo
