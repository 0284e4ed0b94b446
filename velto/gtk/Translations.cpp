// Catalogues by gettext: "velto" in the folder that the library is installed with.
#include "velto/gtk/Translations.h"

#include <dlfcn.h>
#include <libintl.h>
#include <stdlib.h>

#include <filesystem>

namespace velto::gtk {
namespace {

constexpr char domain[] = "velto";

std::filesystem::path catalogues() {
  if (const char* folder = secure_getenv("VELTO_LOCALE_PATH"); folder && *folder) return folder;
  // An application may be packaged with the library, and moved.
  Dl_info self{};
  std::error_code unknown;
  if (dladdr(reinterpret_cast<const void*>(&catalogues), &self) && self.dli_fname) {
    const auto beside =
        std::filesystem::absolute(self.dli_fname, unknown).parent_path() / ".." / VELTO_LOCALES;
    if (std::filesystem::is_directory(beside, unknown)) return beside;
  }
  return VELTO_LOCALE_FOLDER;
}

bool bindCatalogues() {
  bind_textdomain_codeset(domain, "UTF-8");
  return bindtextdomain(domain, catalogues().c_str()) != nullptr;
}

}  // namespace

const char* translated(const char* text) {
  static const bool bound = bindCatalogues();
  return bound && *text ? dgettext(domain, text) : text;
}

}  // namespace velto::gtk
