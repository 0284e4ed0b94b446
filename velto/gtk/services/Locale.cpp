// POSIX locale names ("de_DE.UTF-8@euro") read as language tags.
#include "velto/gtk/services/Locale.h"

#include "velto/platform/foundation/GMemory.h"
#include "velto/platform/foundation/Text.h"

#include <glib.h>

#include <algorithm>
#include <clocale>
#include <cstdlib>

namespace velto::gtk {
namespace {

constexpr char fallbackLanguage[] = "en";  // what programs speak in the locale "C"

bool consistsOf(const std::string& text, size_t least, size_t most, gboolean (*belongs)(char)) {
  return text.size() >= least && text.size() <= most && std::all_of(text.begin(), text.end(), belongs);
}

gboolean isLetter(char c) {
  return g_ascii_isalpha(c);
}
gboolean isLetterOrDigit(char c) {
  return g_ascii_isalnum(c);
}

// Language, script and region of a POSIX name, joined; empty for a name that is none.
std::string tagOf(std::string name, const char* separator) {
  std::string modifier;
  if (const auto at = name.find('@'); at != std::string::npos) {
    modifier = name.substr(at + 1);
    name.resize(at);
  }
  name.resize(std::min(name.find('.'), name.size()));
  if (name == "C" || name == "POSIX") return fallbackLanguage;

  auto parts = split(name, "_");
  if (!consistsOf(parts[0], 2, 8, isLetter)) return {};
  parts[0] = lowercased(parts[0]);
  for (size_t i = 1; i < parts.size(); ++i)
    if (!consistsOf(parts[i], 2, 8, isLetterOrDigit)) return {};
  if (modifier == "latin") parts.insert(parts.begin() + 1, "Latn");
  if (modifier == "cyrillic") parts.insert(parts.begin() + 1, "Cyrl");
  return join(parts, separator);
}

// As POSIX ranks them, for an application that did not take its locale from the environment.
std::string localeOfEnvironment() {
  for (const char* variable : {"LC_ALL", "LC_MESSAGES", "LANG"})
    if (const char* value = std::getenv(variable); value && *value) return value;
  return "C";
}

}  // namespace

std::vector<std::string> preferredLanguageTags() {
  std::vector<std::string> tags;
  for (const char* const* name = g_get_language_names(); *name; ++name) {
    std::string tag = tagOf(*name, "-");
    if (!tag.empty() && std::find(tags.begin(), tags.end(), tag) == tags.end())
      tags.push_back(std::move(tag));
  }
  if (tags.empty()) tags.emplace_back(fallbackLanguage);
  return tags;
}

std::string Locale::localeIdentifier() const {
  const char* set = std::setlocale(LC_MESSAGES, nullptr);
  const std::string name = set && std::string_view(set) != "C" ? set : localeOfEnvironment();
  std::string identifier = tagOf(name, "_");
  return identifier.empty() ? fallbackLanguage : identifier;
}

int TimeZone::secondsFromGMT() const {
  const GOwned<GTimeZone, g_time_zone_unref> zone(g_time_zone_new_local());
  const gint64 now = g_get_real_time() / G_USEC_PER_SEC;
  return g_time_zone_get_offset(zone.get(),
                                g_time_zone_find_interval(zone.get(), G_TIME_TYPE_UNIVERSAL, now));
}

}  // namespace velto::gtk
