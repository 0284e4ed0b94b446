// The sandbox ad server: a local HTTPS server that stands in for the ad server, the publishers' endpoints and
// the tracking host. The velto-sandbox program is a thin shell around it; tests and demos run it in their own
// process.
//
//   velto::sandbox::Options options;
//   options.dataFolder = temporaryFolder;
//   velto::sandbox::Server server(options);
//   server.addRule({"first", {.kind = Kind::Ad, .key = "demo"}, {Answer::markup(html, 320, 50)}});
//   server.start();
//   ... a client that trusts server.caFile() and sends the three host names to 127.0.0.1:server.port() ...
//   ASSERT_TRUE(server.waitForRequests(1, 5s));
//
// Threads: every operation may be called from any thread, except that start and stop must not overlap each
// other.
#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "sandbox/Record.h"
#include "sandbox/Rules.h"

namespace velto::sandbox {

// A fault of the caller's: an unreadable scenario, a port in use, a folder that cannot be written. One line
// of text.
class Error : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

struct Names {
  std::string adServer = "ads.velto.example";
  std::string publishers = "publishers.velto.example";
  std::string tracking = "track.velto.example";
};

struct Options {
  std::string dataFolder;  // where the certificates live; "" is $XDG_DATA_HOME/velto-sandbox
  int port = 0;            // on 127.0.0.1; 0 takes a free one
  Names names;
  std::vector<std::string> scenarioFiles;
  std::string scenarioText;  // a scenario given as text; its file bodies are relative to the current folder
  std::string serveFolder;   // files for downloads that no rule answers; "" serves none
  bool strict = false;       // answer 400 with the list of problems to a request that has any
  // Called for every request when it has arrived, before it is answered, on a thread of the server; calls do
  // not overlap.
  std::function<void(const RecordedRequest&)> onRequest;
};

class Server {
 public:
  // Reads the scenarios and reads or makes the certificates. Without any scenario the built-in one answers.
  // Throws Error.
  explicit Server(Options options);
  // Stops.
  ~Server();
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;

  // Listens, and returns once connections are accepted. Throws Error. A stopped server can be started again,
  // on the same port.
  void start();
  // Closes every connection, answers in progress included, and waits for the server's threads. Not from
  // onRequest.
  void stop();

  int port() const;            // the port listened on; 0 before the first start
  std::string caFile() const;  // PEM file of the certificate authority to trust
  const Names& names() const;

  // Puts a rule before all others, so that the latest added is asked first.
  void addRule(Rule rule);

  // All requests so far, in the order of arrival.
  std::vector<RecordedRequest> requests() const;
  std::vector<RecordedRequest> requests(Kind kind) const;
  void clearRequests();
  // Waits until at least n requests (of that kind) are recorded; false when the time is over first.
  bool waitForRequests(std::size_t n, std::chrono::milliseconds timeout) const;
  bool waitForRequests(Kind kind, std::size_t n, std::chrono::milliseconds timeout) const;

 private:
  class Impl;
  std::unique_ptr<Impl> impl_;
};

// The scenario that answers when none is given, as the text of a scenario file.
const char* defaultScenario();

// $XDG_DATA_HOME/velto-sandbox, or ~/.local/share/velto-sandbox.
std::string defaultDataFolder();

}  // namespace velto::sandbox
