// Putting the Linux platform together, and installing it.
#include "velto/gtk/GtkPlatform.h"

#include "velto/gtk/Views.h"

#include <algorithm>
#include <stdexcept>

namespace velto::gtk {
namespace {

constexpr char storeFile[] = "defaults.sqlite3";
constexpr size_t longestIdentifier = 255;  // what a folder's name may have

// The identifier names a folder and goes into requests.
void requireIdentifier(const std::string& identifier) {
  const bool isName = std::all_of(identifier.begin(), identifier.end(), [](char c) {
    return g_ascii_isalnum(c) || c == '.' || c == '-' || c == '_';
  });
  if (identifier.empty() || identifier.size() > longestIdentifier || !isName || identifier.starts_with('.'))
    throw std::invalid_argument(
        "velto::gtk::install: applicationIdentifier must be a reverse-domain name such as "
        "\"org.example.player\"");
}

std::filesystem::path storePath(const Options& options) {
  const auto folder = options.dataFolder.empty()
                          ? std::filesystem::path(g_get_user_data_dir()) / options.applicationIdentifier
                          : std::filesystem::absolute(options.dataFolder);
  return folder / storeFile;
}

TransportOptions transportOptions(const Options& options) {
  TransportOptions result;
  result.requestTimeout = options.requestTimeout;
  result.caFile = options.caFile;
  result.hostMap = options.hostMap;
  return result;
}

// A window on an upright monitor counts as a device held upright; on any other nothing is known.
UIDeviceOrientation orientationOf(const UIScreen& screen) {
  const auto size = screen.bounds().size;
  return size.height > size.width ? 1 : 0;
}

}  // namespace

GtkPlatform::GtkPlatform(const Options& options)
    : defaults_(storePath(options)),
      mainBundle_(options.applicationIdentifier, options.applicationName),
      device_(orientationOf(screen_)),
      webSession_(std::make_shared<WebSession>(options)),
      media_(options.caFile),
      urlSession_(transportOptions(options)) {}

GtkPlatform::~GtkPlatform() = default;

GtkPlatform* GtkPlatform::installed() {
  return dynamic_cast<GtkPlatform*>(Platform::currentOrNull());
}

void GtkPlatform::stopThreads() {
  urlSession_.stop();
  background_.stop();
}

std::shared_ptr<NSBundle> GtkPlatform::bundleWithIdentifier(const std::string& identifier) {
  return identifier == LibraryBundle::identifier ? libraryBundle_ : nullptr;
}

WKWebsiteDataStore& GtkPlatform::websiteDataStore() {
  if (!websiteDataStore_) websiteDataStore_ = makeWebsiteDataStore(webSession_);
  return *websiteDataStore_;
}

ViewSystem& GtkPlatform::views() {
  if (!views_) views_ = makeViewSystem(webSession_);
  return *views_;
}

void install(Options options) {
  requireIdentifier(options.applicationIdentifier);
  auto platform = std::make_shared<GtkPlatform>(options);
  uninstall();
  Platform::install(std::move(platform));
}

void uninstall() {
  auto* platform = GtkPlatform::installed();
  if (!platform) return;
  platform->stopThreads();
  Platform::install(nullptr);
}

void setInForeground(std::optional<bool> inForeground) {
  if (auto* platform = GtkPlatform::installed()) platform->foreground().setByApplication(inForeground);
}

}  // namespace velto::gtk
