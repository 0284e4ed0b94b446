// A bundle of the headless platform: its facts and resource
// files are what the test puts in. Any thread, once set up.
#pragma once

#include "velto/Export.h"
#include "velto/platform/NSBundle.h"

namespace velto::headless {

class VELTO_EXPORT MemoryBundle : public NSBundle {
 public:
  std::optional<std::string> identifier;
  std::optional<std::map<std::string, std::string>> information;
  std::vector<std::string> localizations{"en"};
  std::map<std::string, std::string> files;                      // "name.extension" to bytes
  std::map<std::string, std::shared_ptr<MemoryBundle>> bundles;  // "name.extension" to bundle

  std::optional<std::string> bundleIdentifier() const override { return identifier; }
  std::optional<std::map<std::string, std::string>> infoDictionary() const override { return information; }
  std::vector<std::string> preferredLocalizations() const override { return localizations; }
  std::shared_ptr<NSBundle> bundleForResource(const std::string& name,
                                              const std::string& extension) const override {
    const auto found = bundles.find(name + "." + extension);
    return found == bundles.end() ? nullptr : found->second;
  }
  std::optional<std::string> contentsOfResource(const std::string& name,
                                                const std::string& extension) const override {
    const auto found = files.find(name + "." + extension);
    return found == files.end() ? std::nullopt : std::optional(found->second);
  }
};

}  // namespace velto::headless
