// Reading and serving creatives.
#include "preview/Creative.h"

#include <curl/curl.h>
#include <glib.h>
#include <httplib.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>

#include "preview/Arguments.h"
#include "sandbox/ServedFolder.h"

namespace velto::preview {
namespace {

constexpr long longestDownload = 30;  // seconds

bool isAddress(const std::string& source) {
  return source.rfind("http://", 0) == 0 || source.rfind("https://", 0) == 0;
}

size_t append(char* data, size_t size, size_t count, void* text) noexcept {
  static_cast<std::string*>(text)->append(data, size * count);
  return size * count;
}

std::string download(const std::string& address) {
  const std::unique_ptr<CURL, void (*)(CURL*)> transfer(curl_easy_init(), curl_easy_cleanup);
  if (!transfer) throw UsageError(address + ": cannot be fetched");
  std::string text;
  curl_easy_setopt(transfer.get(), CURLOPT_URL, address.c_str());
  curl_easy_setopt(transfer.get(), CURLOPT_FOLLOWLOCATION, 1L);
  curl_easy_setopt(transfer.get(), CURLOPT_FAILONERROR, 1L);
  curl_easy_setopt(transfer.get(), CURLOPT_TIMEOUT, longestDownload);
  curl_easy_setopt(transfer.get(), CURLOPT_WRITEFUNCTION, append);
  curl_easy_setopt(transfer.get(), CURLOPT_WRITEDATA, &text);
  const auto result = curl_easy_perform(transfer.get());
  if (result != CURLE_OK) throw UsageError(address + ": " + curl_easy_strerror(result));
  return text;
}

std::string contents(const std::filesystem::path& file) {
  std::ifstream in(file, std::ios::binary);
  std::ostringstream text;
  if (!std::filesystem::is_regular_file(file) || !(text << in.rdbuf()))
    throw UsageError(file.string() + ": cannot be read");
  return text.str();
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

}  // namespace

class Creative::FolderServer {
 public:
  explicit FolderServer(const std::filesystem::path& folder)
      : folder_(folder.empty() ? "." : folder.string()) {
    server_.Get(".*", [this](const httplib::Request& request, httplib::Response& response) {
      auto file = folder_.find(request.path);
      if (!file) {
        response.status = 404;
        return;
      }
      // The second part of a creative is a document without address, too.
      if (file->contentType == "text/html")
        file->bytes = withBase(file->bytes, address() + request.path.substr(1));
      response.set_content(file->bytes, file->contentType);
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

Creative::Creative(const std::string& source) {
  if (isAddress(source)) {
    markup_ = withBase(download(source), source);
    return;
  }
  const std::filesystem::path file(source);
  const auto text = contents(file);
  server_ = std::make_unique<FolderServer>(file.parent_path());
  markup_ = withBase(text, server_->address());
}

Creative::~Creative() = default;

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
