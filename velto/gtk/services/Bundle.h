// The host application and the library as bundles. Any
// thread; both are made by the platform and never change.
#pragma once

#include "velto/platform/NSBundle.h"

namespace velto::gtk {

// The host application: what it told at install().
class ApplicationBundle : public NSBundle {
 public:
  // Without a name the one of GLib counts, else the identifier's last part.
  ApplicationBundle(std::string identifier, std::string name);

  std::optional<std::string> bundleIdentifier() const override { return identifier_; }
  std::optional<std::map<std::string, std::string>> infoDictionary() const override;
  std::vector<std::string> preferredLocalizations() const override { return localizations_; }
  std::shared_ptr<NSBundle> bundleForResource(const std::string&, const std::string&) const override {
    return nullptr;
  }
  std::optional<std::string> contentsOfResource(const std::string&, const std::string&) const override {
    return std::nullopt;
  }

 private:
  std::string identifier_;
  std::string name_;
  std::vector<std::string> localizations_;
};

// The library itself: its version, and the scripts built into it.
class LibraryBundle : public NSBundle {
 public:
  static constexpr char identifier[] = "com.velto.VeltoFramework";

  std::optional<std::string> bundleIdentifier() const override { return identifier; }
  std::optional<std::map<std::string, std::string>> infoDictionary() const override;
  std::vector<std::string> preferredLocalizations() const override { return {"en"}; }
  std::shared_ptr<NSBundle> bundleForResource(const std::string&, const std::string&) const override {
    return nullptr;
  }
  std::optional<std::string> contentsOfResource(const std::string& name,
                                                const std::string& extension) const override;
};

}  // namespace velto::gtk
