// By the head of an answer, and by GStreamer's discoverer.
#include "preview/vast/FileLook.h"

#include <curl/curl.h>
#define G_SETTINGS_ENABLE_BACKEND  // for g_settings_backend_get_default()
#include <gio/gio.h>
#include <gio/gsettingsbackend.h>
#include <gst/gst.h>
#include <gst/pbutils/pbutils.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <set>
#include <string_view>
#include <utility>

namespace velto::preview {
namespace {

constexpr long longestHead = 5;  // seconds

using IsOver = std::function<bool()>;  // nobody wants to know any more

int isToEnd(void* isOver, curl_off_t, curl_off_t, curl_off_t, curl_off_t) noexcept {
  return (*static_cast<const IsOver*>(isOver))() ? 1 : 0;
}

// Servers that do not answer to HEAD leave it at nothing. Why none can be asked, or nothing.
std::string askServer(FileFacts& facts, const std::filesystem::path& caFile, IsOver& isOver) {
  const std::unique_ptr<CURL, void (*)(CURL*)> transfer(curl_easy_init(), curl_easy_cleanup);
  if (!transfer) return {};
  auto* easy = transfer.get();
  curl_easy_setopt(easy, CURLOPT_URL, facts.url.c_str());
  curl_easy_setopt(easy, CURLOPT_NOBODY, 1L);
  curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
  curl_easy_setopt(easy, CURLOPT_FOLLOWLOCATION, 1L);
  curl_easy_setopt(easy, CURLOPT_MAXREDIRS, 10L);
  curl_easy_setopt(easy, CURLOPT_PROTOCOLS_STR, "http,https");
  curl_easy_setopt(easy, CURLOPT_TIMEOUT, longestHead);
  curl_easy_setopt(easy, CURLOPT_NOPROGRESS, 0L);
  curl_easy_setopt(easy, CURLOPT_XFERINFOFUNCTION, isToEnd);
  curl_easy_setopt(easy, CURLOPT_XFERINFODATA, &isOver);
  if (!caFile.empty()) curl_easy_setopt(easy, CURLOPT_CAINFO, caFile.c_str());
  if (const auto result = curl_easy_perform(easy); result != CURLE_OK)
    return result == CURLE_OPERATION_TIMEDOUT ? "" : curl_easy_strerror(result);
  long status = 0;
  curl_off_t length = 0;
  char* type = nullptr;
  curl_easy_getinfo(easy, CURLINFO_RESPONSE_CODE, &status);
  curl_easy_getinfo(easy, CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &length);
  curl_easy_getinfo(easy, CURLINFO_CONTENT_TYPE, &type);
  facts.status = static_cast<int>(status);
  if (status / 100 != 2) return {};
  if (length > 0) facts.bytes = static_cast<double>(length);
  facts.servedAs = type ? std::string(type).substr(0, std::string_view(type).find(';')) : "";
  return {};
}

// GStreamer's names of containers, and those that documents write.
std::string containerNamed(const GstCaps* caps) {
  using Pair = std::pair<std::string_view, const char*>;
  static constexpr std::array names{Pair{"video/quicktime", "video/mp4"}, Pair{"audio/x-m4a", "audio/mp4"},
                                    Pair{"application/ogg", "video/ogg"},
                                    Pair{"application/x-hls", "application/x-mpegurl"},
                                    Pair{"video/mpegts", "video/mp2t"}};
  if (!caps || gst_caps_get_size(caps) == 0) return {};
  const std::string_view name = gst_structure_get_name(gst_caps_get_structure(caps, 0));
  if (name == "application/x-id3" || name == "application/x-apetag")
    return {};  // stand before sound of any kind
  for (const auto& [inside, outside] : names)
    if (inside == name) return outside;
  return std::string(name);
}

void addCodec(FileFacts& facts, GstDiscovererStreamInfo* stream) {
  GstCaps* caps = gst_discoverer_stream_info_get_caps(stream);
  if (!caps) return;
  char* text = gst_pb_utils_get_codec_description(caps);
  if (text) facts.codecs += (facts.codecs.empty() ? "" : ", ") + std::string(text);
  g_free(text);
  gst_caps_unref(caps);
}

void take(FileFacts& facts, GstDiscovererInfo* info) {
  const auto duration = gst_discoverer_info_get_duration(info);
  if (GST_CLOCK_TIME_IS_VALID(duration)) facts.duration = static_cast<double>(duration) / GST_SECOND;
  if (GstDiscovererStreamInfo* whole = gst_discoverer_info_get_stream_info(info)) {
    GstCaps* caps = gst_discoverer_stream_info_get_caps(whole);
    if (GST_IS_DISCOVERER_CONTAINER_INFO(whole)) facts.container = containerNamed(caps);
    if (caps) gst_caps_unref(caps);
    gst_discoverer_stream_info_unref(whole);
  }
  GList* streams = gst_discoverer_info_get_stream_list(info);
  for (const GList* each = streams; each; each = each->next) {
    auto* stream = GST_DISCOVERER_STREAM_INFO(each->data);
    if (GST_IS_DISCOVERER_CONTAINER_INFO(stream)) continue;
    addCodec(facts, stream);
    if (!GST_IS_DISCOVERER_VIDEO_INFO(stream)) continue;
    facts.width = gst_discoverer_video_info_get_width(GST_DISCOVERER_VIDEO_INFO(stream));
    facts.height = gst_discoverer_video_info_get_height(GST_DISCOVERER_VIDEO_INFO(stream));
  }
  gst_discoverer_stream_info_list_free(streams);
}

// One look by the discoverer, in a context of its own, so that it can be given up at any moment.
class Discovery {
 public:
  Discovery(FileFacts& facts, GTlsDatabase* authorities) : facts_(facts), authorities_(authorities) {}

  void run(GMainContext* context, std::chrono::milliseconds longest, const IsOver& isOver) {
    const auto time = std::clamp<GstClockTime>(static_cast<GstClockTime>(longest.count()) * GST_MSECOND,
                                               GST_SECOND, 3600 * GST_SECOND);
    GError* error = nullptr;
    GstDiscoverer* discoverer = gst_discoverer_new(time, &error);
    if (!discoverer) {
      facts_.error = error ? error->message : "it cannot be read";
      return g_clear_error(&error);
    }
    g_signal_connect(discoverer, "discovered", G_CALLBACK(discovered), this);
    g_signal_connect(discoverer, "source-setup", G_CALLBACK(setUp), this);
    gst_discoverer_start(discoverer);
    if (!gst_discoverer_discover_uri_async(discoverer, facts_.url.c_str())) {
      facts_.error = "it cannot be read";
      isDone_ = true;
    }
    while (!isDone_ && !isOver()) g_main_context_iteration(context, TRUE);
    gst_discoverer_stop(discoverer);
    g_object_unref(discoverer);
    if (isLate_) facts_.error = "it does not come within " + std::to_string(time / GST_SECOND) + " s";
  }

 private:
  static void setUp(GstDiscoverer*, GstElement* source, Discovery* self) noexcept {
    if (self->authorities_ && g_object_class_find_property(G_OBJECT_GET_CLASS(source), "tls-database"))
      g_object_set(source, "tls-database", self->authorities_, nullptr);
  }
  // What lacks a decoder here is no broken file.
  static void discovered(GstDiscoverer*, GstDiscovererInfo* info, GError* error, Discovery* self) noexcept {
    const auto result = gst_discoverer_info_get_result(info);
    take(self->facts_, info);
    if (result == GST_DISCOVERER_ERROR || result == GST_DISCOVERER_URI_INVALID)
      self->facts_.error = error ? error->message : "it cannot be read";
    self->isLate_ = result == GST_DISCOVERER_TIMEOUT;
    self->isDone_ = true;
  }

  FileFacts& facts_;
  GTlsDatabase* authorities_;
  bool isDone_ = false, isLate_ = false;
};

}  // namespace

struct FileLook::Shared {
  std::chrono::milliseconds longest;
  std::filesystem::path caFile;
  GMainContext* const context = g_main_context_new();
  std::mutex mutex;
  std::condition_variable news;
  std::deque<std::string> waiting;
  std::set<std::string> known;
  std::atomic<unsigned> round = 0;  // of what is asked for now
  std::atomic<bool> ended = false;
  // Main thread.
  FileLook* owner = nullptr;
  std::function<void(const FileFacts&)> found;

  Shared() = default;
  Shared(const Shared&) = delete;
  Shared& operator=(const Shared&) = delete;
  ~Shared() { g_main_context_unref(context); }
};

FileLook::FileLook(std::chrono::milliseconds longest, std::filesystem::path caFile,
                   std::function<void(const FileFacts&)> found)
    : shared_(std::make_shared<Shared>()) {
  // GLib makes these two on first use, each under a lock and with the other's help: two threads that begin with different ones
  // wait for each other for ever.
  g_proxy_resolver_get_default();
  g_object_unref(g_settings_backend_get_default());
  shared_->longest = longest;
  shared_->caFile = std::move(caFile);
  shared_->owner = this;
  shared_->found = std::move(found);
}

FileLook::~FileLook() {
  shared_->owner = nullptr;
  {
    const std::lock_guard lock(shared_->mutex);
    shared_->ended = true;
  }
  shared_->news.notify_all();
  g_main_context_wakeup(shared_->context);
  if (thread_.joinable()) thread_.join();
}

void FileLook::look(const std::string& url) {
  const std::lock_guard lock(shared_->mutex);
  if (shared_->known.size() >= mostFiles || !shared_->known.insert(url).second) return;
  ++asked_;
  shared_->waiting.push_back(url);
  shared_->news.notify_all();
  if (!thread_.joinable()) thread_ = std::thread(work, shared_);
}

void FileLook::forget() {
  const std::lock_guard lock(shared_->mutex);
  ++shared_->round;
  shared_->waiting.clear();
  shared_->known.clear();
  asked_ = told_ = 0;
  g_main_context_wakeup(shared_->context);
}

void FileLook::work(const std::shared_ptr<Shared>& shared) {
  gst_init(nullptr, nullptr);
  g_main_context_push_thread_default(shared->context);
  GTlsDatabase* authorities =
      shared->caFile.empty() ? nullptr : g_tls_file_database_new(shared->caFile.c_str(), nullptr);
  for (;;) {
    FileFacts facts;
    unsigned round = 0;
    {
      std::unique_lock lock(shared->mutex);
      shared->news.wait(lock, [&] { return shared->ended || !shared->waiting.empty(); });
      if (shared->ended) break;
      facts.url = shared->waiting.front();
      shared->waiting.pop_front();
      round = shared->round;
    }
    IsOver isOver = [&shared, round] { return shared->ended || shared->round != round; };
    const auto unreached = askServer(facts, shared->caFile, isOver);
    if (isOver()) continue;
    Discovery(facts, authorities).run(shared->context, shared->longest, isOver);
    if (isOver()) continue;
    // Some refuse only such a question.
    if (!facts.error.empty() && facts.status >= 400)
      facts.error = "its server answers " + std::to_string(facts.status);
    else if (!facts.error.empty() && !unreached.empty())
      facts.error = unreached;  // GStreamer says less
    struct Word {
      std::shared_ptr<Shared> shared;
      FileFacts facts;
      unsigned round;
    };
    const auto told = +[](gpointer data) -> gboolean {
      const std::unique_ptr<Word> word(static_cast<Word*>(data));
      auto* owner = word->shared->owner;
      if (!owner || word->round != word->shared->round) return G_SOURCE_REMOVE;
      ++owner->told_;
      word->shared->found(word->facts);
      return G_SOURCE_REMOVE;
    };
    g_idle_add_full(G_PRIORITY_DEFAULT, told, new Word{shared, std::move(facts), round}, nullptr);
  }
  if (authorities) g_object_unref(authorities);
  g_main_context_pop_thread_default(shared->context);
}

}  // namespace velto::preview
