// Putting the Linux platform together, and installing it.
#include "velto/gtk/GtkPlatform.h"

#include "velto/gtk/inspector/InspectorPage.h"
#include "velto/gtk/views/Views.h"

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
        "velto::gtk::install: the application's identifier must be a reverse-domain name such as "
        "\"org.example.player\"");
}

std::filesystem::path storePath(const Options& options) {
  const auto folder = options.dataFolder.empty()
                          ? std::filesystem::path(g_get_user_data_dir()) / options.applicationIdentifier
                          : std::filesystem::path(options.dataFolder);
  return std::filesystem::absolute(folder) / storeFile;
}

TransportOptions transportOptions(const Options& options) {
  TransportOptions result;
  result.requestTimeout = options.requestTimeout;
  result.longestRequest = std::max<std::chrono::milliseconds>(result.longestRequest, options.requestTimeout);
  result.caFile = options.caFile;
  result.hostMap = options.hostMap;
  result.mayReachLocalNetwork = options.mayReachLocalNetwork;
  return result;
}

AuthorizationStatus statusOf(bool granted) {
  return granted ? AuthorizationStatusAuthorized : AuthorizationStatusNotDetermined;
}

}  // namespace

GtkPlatform::GtkPlatform(const Options& options)
    : defaults_(storePath(options), DefaultsStore::Opening::Ahead),
      mainBundle_(options.applicationIdentifier, options.applicationName),
      application_(mainQueue_, options.opensOnlyAfterTouch, options.leastTimeUnderTouch,
                   options.refusedToOpen),
      device_(screen_),
      orientationSensor_(mainQueue_, isPanelUpright(device_.userInterfaceIdiom()),
                         [this](auto orientation) { device_.turned(orientation); }),
      sessionLock_(mainQueue_, [this](bool locked) { application_.setLocked(locked, notificationCenter()); }),
      calendar_(mainQueue_, statusOf(options.mayAddCalendarEvents)),
      photos_(mainQueue_, background_, statusOf(options.mayStorePictures)),
      gate_(std::make_shared<NetworkGate>(options)),
      webSession_(std::make_shared<WebSession>(gate_)),
      media_(options.caFile, gate_),
      urlSession_(transportOptions(options)) {
  systemBus_.start();
}

GtkPlatform::~GtkPlatform() = default;

GtkPlatform* GtkPlatform::installed() {
  return dynamic_cast<GtkPlatform*>(Platform::currentOrNull());
}

void GtkPlatform::stopThreads() {
  urlSession_.stop();
  calendar_.stop();
  background_.stop();
  systemBus_.stop();
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
  registerInspectorPage();
}

void uninstall() {
  auto* platform = GtkPlatform::installed();
  if (!platform) return;
  platform->stopThreads();
  Platform::install(nullptr);
}

bool isTrackingAllowed() {
  return AdvertisingFile().read().identifier.has_value();
}

void setTrackingAllowed(bool allowed) {
  const AdvertisingFile file;
  allowed ? file.allow() : file.deny();
}

void setCalendarAccess(Access access) {
  if (auto* platform = GtkPlatform::installed())
    platform->eventStore().setAuthorizationStatus(static_cast<AuthorizationStatus>(access));
}

void setPicturesAccess(Access access) {
  if (auto* platform = GtkPlatform::installed())
    platform->photoLibrary().setAuthorizationStatus(static_cast<AuthorizationStatus>(access));
}

void setScreenSize(std::optional<CGSize> points) {
  if (auto* platform = GtkPlatform::installed()) platform->mainScreen().setSize(points);
}

void setInForeground(std::optional<bool> inForeground) {
  if (auto* platform = GtkPlatform::installed()) platform->foreground().setByApplication(inForeground);
}

}  // namespace velto::gtk
