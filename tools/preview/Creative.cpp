// Reading and serving creatives.
#include "preview/Creative.h"

#include <curl/curl.h>
#include <glib.h>
#include <httplib.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <thread>

#include "preview/Arguments.h"
#include "sandbox/ServedFolder.h"

namespace velto::preview {
namespace {

constexpr long longestDownload = 30;             // seconds
constexpr size_t largestDownload = 100'000'000;  // bytes

bool isAddress(const std::string& source) {
  return source.rfind("http://", 0) == 0 || source.rfind("https://", 0) == 0;
}

size_t append(char* data, size_t size, size_t count, void* text) noexcept {
  auto& whole = *static_cast<std::string*>(text);
  if (whole.size() > largestDownload) return 0;  // which ends it
  whole.append(data, size * count);
  return size * count;
}

std::string download(const std::string& address, const std::string& caFile = {}) {
  const std::unique_ptr<CURL, void (*)(CURL*)> transfer(curl_easy_init(), curl_easy_cleanup);
  if (!transfer) throw UsageError(address + ": cannot be fetched");
  std::string text;
  curl_easy_setopt(transfer.get(), CURLOPT_URL, address.c_str());
  curl_easy_setopt(transfer.get(), CURLOPT_FOLLOWLOCATION, 1L);
  curl_easy_setopt(transfer.get(), CURLOPT_FAILONERROR, 1L);
  curl_easy_setopt(transfer.get(), CURLOPT_TIMEOUT, longestDownload);
  if (!caFile.empty()) curl_easy_setopt(transfer.get(), CURLOPT_CAINFO, caFile.c_str());
  curl_easy_setopt(transfer.get(), CURLOPT_WRITEFUNCTION, append);
  curl_easy_setopt(transfer.get(), CURLOPT_WRITEDATA, &text);
  const auto result = curl_easy_perform(transfer.get());
  if (result != CURLE_OK) throw UsageError(address + ": " + curl_easy_strerror(result));
  return text;
}

std::string contents(const std::filesystem::path& file) {
  std::error_code none;
  std::ifstream in;
  // A pipe that is opened waits for who writes into it.
  if (std::filesystem::is_regular_file(file, none)) in.open(file, std::ios::binary);
  if (!in.is_open()) throw UsageError(file.string() + ": cannot be read");
  return {std::istreambuf_iterator<char>(in), {}};
}

// An ad server's answer is UTF-8; what is not would be no ad, and nobody would know why.
const std::string& judged(const std::string& markup, const std::string& source) {
  if (markup.empty()) throw UsageError(source + ": is empty");
  std::string text = markup;
  std::replace(text.begin(), text.end(), '\0', ' ');  // which it may hold
  if (!g_utf8_validate_len(text.data(), text.size(), nullptr)) throw UsageError(source + ": is not UTF-8");
  return markup;
}

std::string lower(const std::string& text) {
  char* made = g_ascii_strdown(text.c_str(), -1);
  std::string result(made);
  g_free(made);
  return result;
}

// After the tag of that name, or nowhere.
size_t afterTag(const std::string& lowered, const std::string& tag) {
  for (size_t at = lowered.find(tag); at != std::string::npos; at = lowered.find(tag, at + 1)) {
    const char next = at + tag.size() < lowered.size() ? lowered[at + tag.size()] : ' ';
    const auto end = lowered.find('>', at);
    if (end != std::string::npos && (next == '>' || g_ascii_isspace(next))) return end + 1;
  }
  return std::string::npos;
}

std::atomic<int> latency{0};  // see ServingSpeed
std::atomic<int> bytesPerSecond{0};

void serve(std::string bytes, const std::string& type, httplib::Response& response) {
  std::this_thread::sleep_for(std::chrono::milliseconds(latency));
  if (bytesPerSecond == 0 || bytes.empty()) return response.set_content(bytes, type.c_str());
  const auto size = bytes.size();
  response.set_content_provider(
      size, type.c_str(), [bytes = std::move(bytes)](size_t offset, size_t length, httplib::DataSink& sink) {
        constexpr int portionsPerSecond = 10;
        const int speed = bytesPerSecond;
        const auto portion =
            speed ? std::min(length, static_cast<size_t>(speed / portionsPerSecond)) : length;
        if (speed) std::this_thread::sleep_for(std::chrono::milliseconds(1000 / portionsPerSecond));
        return sink.write(bytes.data() + offset, portion);
      });
}

}  // namespace

void setServingSpeed(ServingSpeed speed) {
  latency = speed.latency;
  bytesPerSecond = speed.bytesPerSecond;
}

class Creative::FolderServer {
 public:
  explicit FolderServer(const std::filesystem::path& folder)
      : folder_(folder.empty() ? "." : folder.string()) {
    server_.set_keep_alive_timeout(1);  // seconds: the engine holds connections that the end waits for
    // As content networks do: any page may use what is there, and ask for parts of it.
    server_.set_default_headers({{"Access-Control-Allow-Origin", "*"},
                                 {"Access-Control-Expose-Headers", "*"},
                                 {"Cross-Origin-Resource-Policy", "cross-origin"},
                                 {"Timing-Allow-Origin", "*"},
                                 {"Cache-Control", "public, max-age=3600"}});
    server_.Options(".*", [](const httplib::Request&, httplib::Response& response) {
      response.set_header("Access-Control-Allow-Methods", "GET, HEAD, OPTIONS");
      response.set_header("Access-Control-Allow-Headers", "*");
      response.status = 204;
    });
    server_.Get(".*", [this](const httplib::Request& request, httplib::Response& response) {
      response.set_header("Accept-Ranges", "bytes");
      auto file = folder_.find(request.path);
      if (!file) {
        response.status = 404;
        return;
      }
      // The second part of a creative is a document without address, too.
      if (file->contentType == "text/html")
        file->bytes = withBase(file->bytes, address() + request.path.substr(1));
      serve(std::move(file->bytes), file->contentType, response);
    });
    port_ = server_.bind_to_any_port("127.0.0.1");
    if (port_ <= 0) throw UsageError("no port is free to serve the creative's folder from");
    thread_ = std::thread([this] { server_.listen_after_bind(); });
    while (!server_.is_running()) std::this_thread::yield();  // only then can it be stopped
  }
  ~FolderServer() {
    server_.stop();
    thread_.join();
  }
  std::string address() const { return "http://127.0.0.1:" + std::to_string(port_) + "/"; }

 private:
  const sandbox::ServedFolder folder_;
  httplib::Server server_;
  int port_ = 0;
  std::thread thread_;
};

Creative::Creative(const std::string& source) : source_(source) {
  if (isAddress(source)) {
    markup_ = withBase(judged(download(source), source), source);
    base_ = source.substr(0, source.rfind('/') + 1);
    return;
  }
  const std::filesystem::path file(source);
  const auto text = judged(contents(file), source);
  server_ = std::make_unique<FolderServer>(file.parent_path());
  base_ = server_->address();
  markup_ = withBase(text, base_);
}

Creative::~Creative() = default;

std::string readSource(const std::string& source, const std::string& caFile) {
  auto bytes = isAddress(source) ? download(source, caFile) : contents(source);
  if (bytes.empty()) throw UsageError(source + ": is empty");
  return bytes;
}

std::string withBase(const std::string& markup, const std::string& base) {
  const auto lowered = lower(markup);
  if (afterTag(lowered, "<base") != std::string::npos) return markup;  // it has its own
  size_t at = std::string::npos;
  for (const char* tag : {"<head", "<html", "<!doctype"})
    if (at == std::string::npos) at = afterTag(lowered, tag);
  char* escaped = g_markup_escape_text(base.c_str(), -1);
  const std::string element = std::string("<base href=\"") + escaped + "\">";
  g_free(escaped);
  return std::string(markup).insert(at == std::string::npos ? 0 : at, element);
}

}  // namespace velto::preview
