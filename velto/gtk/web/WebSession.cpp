// The library's web session, and what can be asked of its data.
#include "velto/gtk/web/WebSession.h"

#include "velto/gtk/Modules.h"
#include "velto/gtk/modules/PageMessages.h"
#include "velto/gtk/network/NetworkGate.h"
#include "velto/platform/MainQueue.h"
#include "velto/platform/Platform.h"

#include <webkit/webkit.h>

#include <algorithm>
#include <cmath>

namespace velto::gtk {
namespace {

using Record = GOwned<WebKitWebsiteData, webkit_website_data_unref>;

// A file that a page offers is not for the library to store.
void refuseDownload(WebKitNetworkSession*, WebKitDownload* download, gpointer) noexcept {
  webkit_download_cancel(download);
}

class WebsiteDataStore final : public WKWebsiteDataStore {
 public:
  explicit WebsiteDataStore(std::shared_ptr<WebSession> session) : session_(std::move(session)) {}

  std::vector<std::string> allWebsiteDataTypes() const override;
  void fetchDataRecordsOfTypes(const std::vector<std::string>& types,
                               std::function<void(std::vector<WKWebsiteDataRecord>)> completion) override;
  void removeDataOfTypes(const std::vector<std::string>& types,
                         const std::vector<WKWebsiteDataRecord>& records,
                         std::function<void()> completion) override;
  void removeCookiesSinceDate(double seconds) override;

 private:
  using Records = std::shared_ptr<std::vector<Record>>;
  struct Fetch;
  struct Removal;
  static void fetched(GObject* manager, GAsyncResult* result, gpointer data) noexcept;
  static void removed(GObject* manager, GAsyncResult* result, gpointer data) noexcept;
  WebKitWebsiteDataManager* manager() {
    return webkit_network_session_get_website_data_manager(session_->network());
  }

  std::shared_ptr<WebSession> session_;
  Records records_ = std::make_shared<std::vector<Record>>();  // of the last fetch: what removals are about
};

// Calls in flight. When they come back the store may be gone, and its records with it.
struct WebsiteDataStore::Fetch {
  std::weak_ptr<std::vector<Record>> records;
  std::function<void(std::vector<WKWebsiteDataRecord>)> completion;
};

struct WebsiteDataStore::Removal {
  std::weak_ptr<std::vector<Record>> records;
  std::function<void()> completion;
};

const GFlagsClass& dataTypes() {
  static const auto* types = static_cast<GFlagsClass*>(g_type_class_ref(WEBKIT_TYPE_WEBSITE_DATA_TYPES));
  return *types;
}

bool isSingleType(const GFlagsValue& value) {
  return value.value != 0 && (value.value & (value.value - 1)) == 0;
}

WebKitWebsiteDataTypes typesNamed(const std::vector<std::string>& names) {
  guint types = 0;
  for (guint i = 0; i < dataTypes().n_values; ++i) {
    const GFlagsValue& value = dataTypes().values[i];
    if (isSingleType(value) && std::find(names.begin(), names.end(), value.value_nick) != names.end())
      types |= value.value;
  }
  return static_cast<WebKitWebsiteDataTypes>(types);
}

std::vector<std::string> WebsiteDataStore::allWebsiteDataTypes() const {
  std::vector<std::string> names;
  for (guint i = 0; i < dataTypes().n_values; ++i)
    if (isSingleType(dataTypes().values[i])) names.emplace_back(dataTypes().values[i].value_nick);
  return names;
}

void WebsiteDataStore::fetchDataRecordsOfTypes(
    const std::vector<std::string>& types, std::function<void(std::vector<WKWebsiteDataRecord>)> completion) {
  // Nothing can be there, and asking would start the engine or wait for its start.
  if (!*session_->hadPages()) {
    Platform::current().mainQueue().post([completion = std::move(completion)] { completion({}); });
    return;
  }
  webkit_website_data_manager_fetch(manager(), typesNamed(types), nullptr, fetched,
                                    new Fetch{records_, std::move(completion)});
}

void WebsiteDataStore::fetched(GObject* manager, GAsyncResult* result, gpointer data) noexcept {
  const std::unique_ptr<Fetch> fetch(static_cast<Fetch*>(data));
  GList* found =
      webkit_website_data_manager_fetch_finish(WEBKIT_WEBSITE_DATA_MANAGER(manager), result, nullptr);
  std::vector<Record> records;
  for (GList* item = found; item; item = item->next)
    records.emplace_back(static_cast<WebKitWebsiteData*>(item->data));
  g_list_free(found);
  const auto kept = fetch->records.lock();
  if (!kept) return;
  std::vector<WKWebsiteDataRecord> answer;
  for (const auto& record : records) {
    const char* name = webkit_website_data_get_name(record.get());
    answer.push_back({name ? name : ""});
  }
  *kept = std::move(records);
  fetch->completion(std::move(answer));
}

void WebsiteDataStore::removeDataOfTypes(const std::vector<std::string>& types,
                                         const std::vector<WKWebsiteDataRecord>& records,
                                         std::function<void()> completion) {
  GList* chosen = nullptr;
  for (const auto& record : *records_) {
    const char* name = webkit_website_data_get_name(record.get());
    const bool wanted = std::any_of(records.begin(), records.end(),
                                    [&](const auto& wish) { return wish.displayName == (name ? name : ""); });
    if (wanted) chosen = g_list_prepend(chosen, record.get());
  }
  if (!chosen) {
    Platform::current().mainQueue().post(std::move(completion));
    return;
  }
  webkit_website_data_manager_remove(manager(), typesNamed(types), chosen, nullptr, removed,
                                     new Removal{records_, std::move(completion)});
  g_list_free(chosen);
}

void WebsiteDataStore::removed(GObject* manager, GAsyncResult* result, gpointer data) noexcept {
  const std::unique_ptr<Removal> removal(static_cast<Removal*>(data));
  webkit_website_data_manager_remove_finish(WEBKIT_WEBSITE_DATA_MANAGER(manager), result, nullptr);
  if (!removal->records.expired()) removal->completion();
}

void WebsiteDataStore::removeCookiesSinceDate(double seconds) {
  if (!*session_->hadPages()) return;
  // The engine counts back from now and takes 0 for all time.
  const double span = static_cast<double>(g_get_real_time()) - seconds * G_USEC_PER_SEC;
  if (span <= 0) return;
  const GTimeSpan back = std::isfinite(span) && span < 9e18 ? static_cast<GTimeSpan>(span) : 0;
  webkit_website_data_manager_clear(manager(), WEBKIT_WEBSITE_DATA_COOKIES, back, nullptr, nullptr, nullptr);
}

}  // namespace

WebSession::WebSession(std::shared_ptr<NetworkGate> gate) : gate_(std::move(gate)) {
  g_weak_ref_init(&context_, nullptr);
}
WebSession::~WebSession() {
  g_weak_ref_clear(&context_);
}

WebKitNetworkSession* WebSession::network() {
  if (!network_) {
    network_ = GPtr<WebKitNetworkSession>::adopt(webkit_network_session_new_ephemeral());
    webkit_network_session_set_tls_errors_policy(network_, WEBKIT_TLS_ERRORS_POLICY_FAIL);
    g_signal_connect(network_, "download-started", G_CALLBACK(refuseDownload), nullptr);
    if (const auto& gate = gate_->address(); !gate.empty()) {
      const GOwned<WebKitNetworkProxySettings, webkit_network_proxy_settings_free> proxy(
          webkit_network_proxy_settings_new(gate.c_str(), nullptr));
      webkit_network_session_set_proxy_settings(network_, WEBKIT_NETWORK_PROXY_MODE_CUSTOM, proxy.get());
    }
  }
  return network_;
}

GPtr<WebKitWebContext> WebSession::context() {
  auto context = GPtr<WebKitWebContext>::adopt(static_cast<WebKitWebContext*>(g_weak_ref_get(&context_)));
  if (!context) {
    context = GPtr<WebKitWebContext>::adopt(webkit_web_context_new());
    // A browser's caches keep the processes of sites that were
    // left, in case somebody goes back. Nobody goes back to an ad.
    webkit_web_context_set_cache_model(context, WEBKIT_CACHE_MODEL_DOCUMENT_VIEWER);
    const auto folder = findModuleFile(page::moduleFile).parent_path();
    webkit_web_context_add_path_to_sandbox(context, folder.c_str(), TRUE);
    webkit_web_context_set_web_process_extensions_directory(context, folder.c_str());
    g_weak_ref_set(&context_, context.get());
  }
  return context;
}

std::unique_ptr<WKWebsiteDataStore> makeWebsiteDataStore(std::shared_ptr<WebSession> session) {
  return std::make_unique<WebsiteDataStore>(std::move(session));
}

}  // namespace velto::gtk
