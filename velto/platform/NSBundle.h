// Supplied by the platform: what is known of an application
// or library as it was delivered, and its resource files.
#pragma once

#include "velto/Export.h"

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace velto {

// Any thread; unchanging while the process runs.
class VELTO_EXPORT NSBundle {
 public:
  virtual ~NSBundle() = default;

  // Reverse-domain name, such as "org.example.player".
  virtual std::optional<std::string> bundleIdentifier() const = 0;
  // Facts under the keys of an information dictionary ("CFBundleName",
  // "CFBundleShortVersionString"); nothing when the bundle has none.
  virtual std::optional<std::map<std::string, std::string>> infoDictionary() const = 0;
  // Languages of the bundle that the user prefers, best first (BCP 47 tags).
  virtual std::vector<std::string> preferredLocalizations() const = 0;
  // A bundle among this one's resources, by name and extension; null when there is none.
  virtual std::shared_ptr<NSBundle> bundleForResource(const std::string& name,
                                                      const std::string& extension) const = 0;
  // The bytes of a resource file, by name and extension.
  virtual std::optional<std::string> contentsOfResource(const std::string& name,
                                                        const std::string& extension) const = 0;
};

}  // namespace velto
