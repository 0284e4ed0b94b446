// The velto-sandbox program: the sandbox ad server with a command line and a log.
#include <signal.h>

#include <charconv>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <mutex>
#include <optional>

#include "common/CommandLine.h"
#include "sandbox/Json.h"
#include "sandbox/Scenario.h"
#include "sandbox/Server.h"
#include "sandbox/Text.h"

namespace {

using velto::sandbox::Error;
using velto::sandbox::Json;

struct Arguments {
  velto::sandbox::Options options;
  std::string logFile;
  std::string portFile;
  bool printCa = false;
  bool printScenario = false;
};

std::string hostName(const std::string& option, const std::string& value) {
  if (!velto::sandbox::isHostName(value)) throw Error(option + ": \"" + value + "\" is not a host name");
  return velto::sandbox::lowerCase(value);
}

int portNumber(const std::string& value) {
  int port = -1;
  const auto [end, fault] = std::from_chars(value.data(), value.data() + value.size(), port);
  if (fault != std::errc() || end != value.data() + value.size() || port < 0 || port > 65535) {
    throw Error("--port: \"" + value + "\" is not a number from 0 to 65535");
  }
  return port;
}

// The manual page's own chapters.
void describe(velto::tools::CommandLine& line) {
  line.section("GETTING STARTED",
               R"(Start velto-sandbox. Its first line of output names the port and the certificate file:

  {"event":"listening","host":"127.0.0.1","port":41234,"ca":".../ca.pem"}

Make the client trust that certificate and send the three host names to 127.0.0.1 and that port. With curl:

  curl --cacert .../ca.pem --connect-to ::127.0.0.1:41234 https://track.velto.example/trk_click.php?id=x

Then every request appears as one line of JSON: kind, host, path, query, headers, body, the rule that answered, the
status, and "problems", the list of what a real server would not expect in it.

The built-in scenario answers ad requests with a small page of the size asked for. These publisher keys ask for
something else: nofill, nofill-page, error, notfound, cut, nosize, mraid, mediation, slow.)");
  line.section("SCENARIO FILES", R"(A JSON object with a list of rules; the first that matches answers:

  {"rules": [{"name": "...", "when": {...}, "answer": {...}}]}

  when      kind (ad, mediation, install, click, download, other), key, type (banner, interstitial),
            size (320x50, ...), host, endpoint, path (may end in *), item,
            request ("first", 3, {"from": 2}, {"every": 2}); all optional
  answer    status, headers, body (text, list of lines, {"file": ...}, {"base64": ...} or {"json": ...}),
            delayMs, expand (fills {{width}}, {{height}}, {{key}}, {{type}}, {{host}}, {{count}}), fault;
            or just a status
  answers   a list of answers, given in turn; the last repeats
  fault     "cut": "headers" or a number of bytes, "slow": {"bytes": 100, "everyMs": 50},
            "contentLength": 5000
  tls       instead of an answer: refuse, wrong-name, expired or untrusted; when may then hold host, endpoint
            and request)");
}

// Nothing when the call asked for a text only, which has been given.
std::optional<Arguments> parse(const std::vector<std::string>& words) {
  using Value = velto::tools::Word::Value;
  Arguments arguments;
  velto::sandbox::Options& options = arguments.options;
  velto::tools::CommandLine line("velto-sandbox",
                                 "plays the ad server of applications that use Velto, on this machine");
  line.option("--port", "N", "listens on 127.0.0.1, port N; 0 (default): a free one",
              [&](const auto& value) { options.port = portNumber(value); });
  line.option(
      "--port-file", "FILE", "writes the port to FILE once it listens",
      [&](const auto& value) { arguments.portFile = value; }, Value::File);
  line.option(
      "--data", "DIR", "folder of the certificates (~/.local/share/velto-sandbox)",
      [&](const auto& value) { options.dataFolder = value; }, Value::Folder);
  line.option(
      "--scenario", "FILE", "answers by the rules of FILE; of several the first go first",
      [&](const auto& value) { options.scenarioFiles.push_back(value); }, Value::File);
  line.option(
      "--serve", "DIR", "hands out the files of DIR where no rule answers",
      [&](const auto& value) { options.serveFolder = value; }, Value::Folder);
  line.option(
      "--log", "FILE", "appends the requests to FILE instead of standard output",
      [&](const auto& value) { arguments.logFile = value; }, Value::File);
  line.flag("--strict", "answers 400 to what a real server would not expect", [&] { options.strict = true; });
  line.option("--ad-server", "NAME", "host of the ad server (ads.velto.example)",
              [&](const auto& value) { options.names.adServer = hostName("--ad-server", value); });
  line.option("--publishers", "NAME", "domain of the custom endpoints (publishers.velto.example)",
              [&](const auto& value) { options.names.publishers = hostName("--publishers", value); });
  line.option("--tracking", "NAME", "host of the tracking server (track.velto.example)",
              [&](const auto& value) { options.names.tracking = hostName("--tracking", value); });
  line.flag("--print-ca", "prints the certificate to trust (PEM), and ends",
            [&] { arguments.printCa = true; });
  line.flag("--print-scenario", "prints the built-in scenario, an example, and ends",
            [&] { arguments.printScenario = true; });
  line.exitCodes("0 after SIGINT or SIGTERM, 2 when something given is wrong");
  describe(line);
  if (!line.read(words)) return std::nullopt;
  return arguments;
}

int run(Arguments arguments) {
  if (arguments.printScenario) {
    std::cout << velto::sandbox::defaultScenario() << '\n';
    return 0;
  }

  std::ofstream log;
  if (!arguments.logFile.empty()) {
    log.open(arguments.logFile, std::ios::app);
    if (!log) throw Error(arguments.logFile + ": cannot be written");
  }
  std::ostream& output = arguments.logFile.empty() ? std::cout : log;
  // Requests may arrive before the line with the port is out: it goes first.
  std::mutex outputMutex;
  arguments.options.onRequest = [&](const velto::sandbox::RecordedRequest& request) {
    const std::lock_guard lock(outputMutex);
    output << request.toJsonLine() << std::endl;
  };
  velto::sandbox::Server server(std::move(arguments.options));
  if (arguments.printCa) {
    std::cout << velto::sandbox::readFile(server.caFile());
    return 0;
  }

  // Blocked before any thread starts, so that the signals arrive only where they are waited for.
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGINT);
  sigaddset(&signals, SIGTERM);
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);

  {
    const std::lock_guard lock(outputMutex);
    server.start();
    const Json line = {
        {"event", "listening"}, {"host", "127.0.0.1"}, {"port", server.port()}, {"ca", server.caFile()}};
    std::cout << line.dump(-1, ' ', false, Json::error_handler_t::replace) << std::endl;
  }
  if (!arguments.portFile.empty()) {
    std::ofstream file(arguments.portFile, std::ios::trunc);
    file << server.port() << '\n';
    if (!file.flush()) throw Error(arguments.portFile + ": cannot be written");
  }
  int signal = 0;
  sigwait(&signals, &signal);
  server.stop();
  return 0;
}

}  // namespace

int main(int count, char** words) {
  return velto::tools::runTool("velto-sandbox", count, words, [](const std::vector<std::string>& call) {
    const auto arguments = parse(call);
    return arguments ? run(*arguments) : 0;
  });
}
