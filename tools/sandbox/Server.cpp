// Puts the parts together: records and checks each request, picks its answer, and sends it with its faults.
// See Server.h.
#include "sandbox/Server.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstdlib>
#include <mutex>

#include "sandbox/Certificates.h"
#include "sandbox/Expansion.h"
#include "sandbox/Http.h"
#include "sandbox/RequestCheck.h"
#include "sandbox/RuleBook.h"
#include "sandbox/Scenario.h"
#include "sandbox/ServedFolder.h"
#include "sandbox/Text.h"
#include "sandbox/TlsServer.h"

namespace velto::sandbox {

namespace {

std::vector<std::string> certificateNames(const Names& names) {
  return {names.adServer, names.publishers, "*." + names.publishers, names.tracking, "localhost"};
}

std::string hostWithoutPort(const std::string& header) {
  const std::string host = lowerCase(header);
  if (host.starts_with('[')) return host.substr(0, host.find(']') + 1);
  return host.substr(0, host.find(':'));
}

std::int64_t millisecondsSince1970() {
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
}

RecordedRequest recordOf(const HttpRequest& request, const TlsConnection& connection) {
  RecordedRequest record;
  record.timeMs = millisecondsSince1970();
  record.connection = connection.number();
  record.tlsResumed = connection.resumed();
  record.host = hostWithoutPort(request.header("Host"));
  record.method = request.method;
  record.path = percentDecode(request.target.substr(0, request.target.find_first_of("?#")));
  record.query = decodeQuery(request.target);
  record.headers = request.headers;
  record.body = request.body;
  record.kind = kindOf(record);
  return record;
}

// Cuts the body down to the range that the request asks for, as players do to seek (RFC 9110, section 14).
// Requests for several ranges, and texts that are no range, get the whole body, which the standard allows.
void applyRange(const HttpRequest& request, Answer& answer) {
  const std::string header = request.header("Range");
  const std::size_t dash = header.find('-');
  if (!header.starts_with("bytes=") || dash == std::string::npos || header.size() > 40) return;
  const std::string first = header.substr(6, dash - 6);
  const std::string last = header.substr(dash + 1);
  const auto isNumber = [](const std::string& text) { return isDigits(text) && text.size() < 16; };
  if ((!first.empty() && !isNumber(first)) || (!last.empty() && !isNumber(last))) return;
  if (first.empty() && last.empty()) return;

  const std::size_t size = answer.body.size();
  const auto within = [size](std::uint64_t place) {
    return static_cast<std::size_t>(std::min<std::uint64_t>(size, place));
  };
  std::size_t from = 0;
  std::size_t to = size;
  if (first.empty()) {
    from = size - within(std::stoull(last));
  } else {
    from = within(std::stoull(first));
    if (!last.empty()) to = within(std::stoull(last) + 1);
  }
  if (from >= to) {
    answer.status = 416;
    answer.header("Content-Range", "bytes */" + std::to_string(size));
    answer.body.clear();
    return;
  }
  answer.status = 206;
  answer.header("Content-Range",
                "bytes " + std::to_string(from) + "-" + std::to_string(to - 1) + "/" + std::to_string(size));
  answer.body = answer.body.substr(from, to - from);
}

// Sends the answer with the faults that it asks for. False closes the connection, which any of them does.
bool send(const Answer& answer, const HttpRequest& request, TlsConnection& connection) {
  const Fault& fault = answer.fault;
  connection.wait(answer.delay);
  if (fault.cutBeforeHeaders) {
    connection.cut();
    return false;
  }

  HeaderFields fields = answer.headers;
  const std::size_t length = fault.declaredLength.value_or(answer.body.size());
  const bool hasType = std::any_of(fields.begin(), fields.end(), [](const auto& field) {
    return lowerCase(field.first) == "content-type";
  });
  if (length > 0 && !hasType) fields.emplace_back("Content-Type", "text/plain");
  const bool mayHaveBody = answer.status >= 200 && answer.status != 204 && answer.status != 304;
  if (length > 0 || mayHaveBody) fields.emplace_back("Content-Length", std::to_string(length));
  if (!request.keepsConnection) fields.emplace_back("Connection", "close");
  const std::string head = headOf(answer.status, fields);
  const std::size_t size = request.method == "HEAD" ? 0 : answer.body.size();
  const std::size_t last = std::min(size, fault.cutAfterBytes.value_or(size));
  if (!fault.any()) {
    connection.write(head + answer.body.substr(0, last));
    return request.keepsConnection;
  }
  connection.write(head);
  for (std::size_t offset = 0; offset < last;) {
    const std::size_t count =
        std::min(last - offset, fault.chunkBytes > 0 ? fault.chunkBytes : last - offset);
    if (!connection.write(std::string_view(answer.body).substr(offset, count))) break;
    offset += count;
    if (fault.chunkBytes > 0 && offset < last) connection.wait(fault.interval);
  }
  if (fault.cutAfterBytes) connection.cut();
  return false;
}

}  // namespace

class Server::Impl {
 public:
  explicit Impl(Options options)
      : options_(std::move(options)),
        folder_(options_.serveFolder),
        certificates_(
            loadOrMakeCertificates(options_.dataFolder.empty() ? defaultDataFolder() : options_.dataFolder,
                                   certificateNames(options_.names))) {
    std::vector<std::vector<Rule>> scenarios;
    for (const std::string& file : options_.scenarioFiles) scenarios.push_back(readScenarioFile(file));
    if (!options_.scenarioText.empty())
      scenarios.push_back(readScenarioText(options_.scenarioText, "scenario", ""));
    if (scenarios.empty()) scenarios.push_back(readScenarioText(defaultScenario(), "default scenario", ""));
    for (std::vector<Rule>& scenario : scenarios) {
      for (Rule& rule : scenario) rules_.append(std::move(rule));
    }
    // Tracks are acknowledged unless a rule says otherwise.
    rules_.append({"acknowledge", {.kind = Kind::Install}, {Answer::text(200, "1")}});
    rules_.append({"acknowledge", {.kind = Kind::Click}, {Answer::text(200, "1")}});
  }

  void start() {
    if (https_) return;
    auto https = std::make_unique<TlsServer>(
        certificates_, [this](const TlsConnection& connection) { return handshakeFault(connection); },
        [this](TlsConnection& connection) { serve(connection); });
    const int wanted = port_ != 0 ? port_.load() : options_.port;
    const int port = https->open(wanted);
    if (port == 0) throw Error("port " + std::to_string(wanted) + " on 127.0.0.1 cannot be listened on");
    port_ = port;
    https_ = std::move(https);
  }

  void stop() { https_.reset(); }

  void store(const RecordedRequest& record) {
    const std::lock_guard reporting(reportMutex_);
    {
      const std::lock_guard lock(mutex_);
      requests_.push_back(record);
    }
    arrived_.notify_all();
    if (options_.onRequest) options_.onRequest(record);
  }

  template <typename Wanted>
  bool wait(std::size_t n, std::chrono::milliseconds timeout, Wanted wanted) {
    std::unique_lock lock(mutex_);
    return arrived_.wait_for(lock, timeout, [&] {
      return static_cast<std::size_t>(std::count_if(requests_.begin(), requests_.end(), wanted)) >= n;
    });
  }

  const Options options_;
  const ServedFolder folder_;
  const Certificates certificates_;
  RuleBook rules_;
  std::atomic<int> port_{0};
  mutable std::mutex mutex_;  // of requests_
  std::condition_variable arrived_;
  std::vector<RecordedRequest> requests_;

 private:
  TlsFault handshakeFault(const TlsConnection& connection) {
    RequestFacts facts;
    facts.kind = Kind::Tls;
    facts.host = connection.serverName();
    facts.endpoint = endpointOf(facts.host, options_.names);
    const auto chosen = rules_.chooseTls(facts);
    if (!chosen) return TlsFault::None;
    RecordedRequest record;
    record.timeMs = millisecondsSince1970();
    record.connection = connection.number();
    record.kind = Kind::Tls;
    record.host = facts.host;
    record.rule = chosen->first;
    store(record);
    return chosen->second;
  }

  ChosenAnswer choose(const RecordedRequest& record) {
    if (options_.strict && !record.problems.empty()) {
      return {"strict", Answer::text(400, join(record.problems, "\n") + "\n")};
    }
    RequestFacts facts;
    facts.kind = record.kind;
    facts.host = record.host;
    facts.endpoint = endpointOf(record.host, options_.names);
    facts.path = record.path;
    facts.key = record.kind == Kind::Install && record.track
                    ? record.track->arguments
                    : record.queryValue(record.kind == Kind::Vast ? "key" : "k");
    facts.type = record.queryValue("at");
    facts.size = record.queryValue("fsz");
    if (record.kind == Kind::Mediation) facts.item = record.body;
    if (std::optional<ChosenAnswer> chosen = rules_.choose(facts)) return std::move(*chosen);
    if (record.kind == Kind::Download) {
      if (std::optional<ServedFile> file = folder_.find(record.path)) {
        return {"served folder",
                Answer::text(200, std::move(file->bytes)).header("Content-Type", file->contentType)};
      }
    }
    return {"", Answer::text(404, "no rule matches this request\n")};
  }

  void serve(TlsConnection& connection) {
    HttpReader reader(connection);
    try {
      while (const std::optional<HttpRequest> request = reader.next()) {
        if (!answer(*request, connection)) return;
      }
    } catch (const HttpError& error) {
      connection.write(headOf(error.status, {{"Content-Length", "0"}, {"Connection", "close"}}));
      connection.finish();
    }
  }

  bool answer(const HttpRequest& request, TlsConnection& connection) {
    RecordedRequest record = recordOf(request, connection);
    checkRequest(record, options_.names);
    ChosenAnswer chosen = choose(record);
    if (chosen.answer.expand) expand(chosen, record);
    if (chosen.answer.status == 200 && !chosen.answer.fault.any()) applyRange(request, chosen.answer);
    record.rule = chosen.rule;
    record.status = chosen.answer.fault.cutBeforeHeaders ? 0 : chosen.answer.status;
    store(record);
    return send(chosen.answer, request, connection);
  }

  std::mutex reportMutex_;  // keeps calls of onRequest apart, and in the order of requests_
  std::unique_ptr<TlsServer> https_;
};

Server::Server(Options options) : impl_(std::make_unique<Impl>(std::move(options))) {}
Server::~Server() {
  stop();
}

void Server::start() {
  impl_->start();
}
void Server::stop() {
  impl_->stop();
}
int Server::port() const {
  return impl_->port_;
}
std::string Server::caFile() const {
  return impl_->certificates_.caFile;
}
const Names& Server::names() const {
  return impl_->options_.names;
}
void Server::addRule(Rule rule) {
  impl_->rules_.prepend(std::move(rule));
}

std::vector<RecordedRequest> Server::requests() const {
  const std::lock_guard lock(impl_->mutex_);
  return impl_->requests_;
}

std::vector<RecordedRequest> Server::requests(Kind kind) const {
  std::vector<RecordedRequest> all = requests();
  std::erase_if(all, [&](const RecordedRequest& record) { return record.kind != kind; });
  return all;
}

void Server::clearRequests() {
  const std::lock_guard lock(impl_->mutex_);
  impl_->requests_.clear();
}

bool Server::waitForRequests(std::size_t n, std::chrono::milliseconds timeout) const {
  return impl_->wait(n, timeout, [](const RecordedRequest&) { return true; });
}

bool Server::waitForRequests(Kind kind, std::size_t n, std::chrono::milliseconds timeout) const {
  return impl_->wait(n, timeout, [kind](const RecordedRequest& record) { return record.kind == kind; });
}

std::string defaultDataFolder() {
  const auto folder = [](const char* variable) {
    const char* value = std::getenv(variable);
    return std::string(value && value[0] == '/' ? value : "");
  };
  if (const std::string data = folder("XDG_DATA_HOME"); !data.empty()) return data + "/velto-sandbox";
  if (const std::string home = folder("HOME"); !home.empty()) return home + "/.local/share/velto-sandbox";
  throw Error("no folder for certificates: neither XDG_DATA_HOME nor HOME is set");
}

}  // namespace velto::sandbox
