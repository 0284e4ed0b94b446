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

RecordedRequest recordOf(const httplib::Request& request, const TlsConnection& connection) {
  RecordedRequest record;
  record.timeMs = millisecondsSince1970();
  record.connection = connection.number();
  record.tlsResumed = connection.resumed();
  record.host = hostWithoutPort(request.get_header_value("Host"));
  record.method = request.method;
  record.path = percentDecode(request.target.substr(0, request.target.find_first_of("?#")));
  record.query = decodeQuery(request.target);
  for (const auto& [name, value] : request.headers) {
    // The HTTP library adds these four to what the client sent.
    if (name == "REMOTE_ADDR" || name == "REMOTE_PORT" || name == "LOCAL_ADDR" || name == "LOCAL_PORT")
      continue;
    record.headers.emplace_back(name, value);
  }
  record.body = request.body;
  record.kind = kindOf(record);
  return record;
}

// Writes the body with the faults that the answer asks for. False closes the connection.
bool writeBody(const Answer& answer, httplib::DataSink& sink, TlsConnection& connection) {
  const Fault& fault = answer.fault;
  const std::size_t last = std::min(answer.body.size(), fault.cutAfterBytes.value_or(answer.body.size()));
  for (std::size_t offset = 0; offset < last;) {
    const std::size_t size = std::min(last - offset, fault.chunkBytes > 0 ? fault.chunkBytes : last - offset);
    if (!sink.write(answer.body.data() + offset, size)) return false;
    offset += size;
    if (fault.chunkBytes > 0 && offset < last) connection.wait(fault.interval);
  }
  if (!fault.any()) return true;
  connection.cut();
  return false;
}

// Cuts the body down to the range that the request asks for, as players do to seek (RFC 9110, section 14).
// Requests for several ranges, and texts that are no range, get the whole body, which the standard allows.
void applyRange(const httplib::Request& request, Answer& answer) {
  const std::string header = request.get_header_value("Range");
  const std::size_t dash = header.find('-');
  if (!header.starts_with("bytes=") || dash == std::string::npos || header.size() > 40) return;
  const std::string first = header.substr(6, dash - 6);
  const std::string last = header.substr(dash + 1);
  const auto isNumber = [](const std::string& text) { return isDigits(text) && text.size() < 16; };
  if ((!first.empty() && !isNumber(first)) || (!last.empty() && !isNumber(last))) return;
  if (first.empty() && last.empty()) return;

  const std::size_t size = answer.body.size();
  std::size_t from = 0;
  std::size_t to = size;
  if (first.empty()) {
    from = size - std::min<std::size_t>(size, std::stoull(last));
  } else {
    from = std::stoull(first);
    if (!last.empty()) to = std::min<std::size_t>(size, std::stoull(last) + 1);
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

void send(Answer answer, const httplib::Request& request, httplib::Response& response) {
  TlsConnection& connection = TlsConnection::of(request);
  connection.wait(answer.delay);
  if (answer.fault.cutBeforeHeaders) return connection.cut();

  response.status = answer.status;
  std::string contentType;
  for (const auto& [name, value] : answer.headers) {
    if (lowerCase(name) == "content-type") {
      contentType = value;
    } else {
      response.set_header(name, value);
    }
  }
  const std::size_t length = answer.fault.declaredLength.value_or(answer.body.size());
  if (length == 0) {
    if (!contentType.empty()) response.set_header("Content-Type", contentType);
    return;
  }
  // A provider rather than a body: what a scenario says is what goes over the wire, without compression.
  response.set_content_provider(
      length, contentType.empty() ? "text/plain" : contentType,
      [answer = std::move(answer), &connection](std::size_t, std::size_t, httplib::DataSink& sink) {
        return writeBody(answer, sink, connection);
      });
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
        certificates_, [this](const TlsConnection& connection) { return handshakeFault(connection); });
    const auto handler = [this](const httplib::Request& request, httplib::Response& response) {
      answer(request, response);
    };
    constexpr const char* kAnyPath = R"([\s\S]*)";
    https->Get(kAnyPath, handler).Post(kAnyPath, handler).Put(kAnyPath, handler);
    https->Patch(kAnyPath, handler).Delete(kAnyPath, handler).Options(kAnyPath, handler);
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

  void answer(const httplib::Request& request, httplib::Response& response) {
    RecordedRequest record = recordOf(request, TlsConnection::of(request));
    checkRequest(record, options_.names);
    ChosenAnswer chosen = choose(record);
    if (chosen.answer.expand) expand(chosen, record);
    if (chosen.answer.status == 200 && !chosen.answer.fault.any()) applyRange(request, chosen.answer);
    record.rule = chosen.rule;
    record.status = chosen.answer.fault.cutBeforeHeaders ? 0 : chosen.answer.status;
    store(record);
    send(std::move(chosen.answer), request, response);
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
