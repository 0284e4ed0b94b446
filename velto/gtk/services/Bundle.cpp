// Names and versions of the application and the library.
#include "velto/gtk/services/Bundle.h"

#include "velto/gtk/services/Locale.h"
#include "velto/resources/Resources.h"

#include <glib.h>

namespace velto::gtk {
namespace {

std::string nameOr(std::string name, const std::string& identifier) {
  if (!name.empty()) return name;
  // GLib answers with the program's name where no application name was set.
  const char* known = g_get_application_name();
  if (known && g_strcmp0(known, g_get_prgname()) != 0) return known;
  return identifier.substr(identifier.rfind('.') + 1);
}

}  // namespace

ApplicationBundle::ApplicationBundle(std::string identifier, std::string name)
    : identifier_(std::move(identifier)),
      name_(nameOr(std::move(name), identifier_)),
      localizations_(preferredLanguageTags()) {}

std::optional<std::map<std::string, std::string>> ApplicationBundle::infoDictionary() const {
  return std::map<std::string, std::string>{{"CFBundleIdentifier", identifier_}, {"CFBundleName", name_}};
}

std::optional<std::map<std::string, std::string>> LibraryBundle::infoDictionary() const {
  return std::map<std::string, std::string>{{"CFBundleIdentifier", identifier},
                                            {"CFBundleName", "Velto"},
                                            {"CFBundleShortVersionString", VELTO_VERSION}};
}

std::optional<std::string> LibraryBundle::contentsOfResource(const std::string& name,
                                                             const std::string& extension) const {
  const auto text = resourceText(name + "." + extension);
  return text ? std::optional<std::string>(*text) : std::nullopt;
}

}  // namespace velto::gtk
