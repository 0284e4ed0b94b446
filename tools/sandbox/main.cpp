// The velto-sandbox program: the sandbox ad server with a command line and a log.
#include <signal.h>

#include <charconv>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <mutex>

#include "sandbox/Json.h"
#include "sandbox/Scenario.h"
#include "sandbox/Server.h"
#include "sandbox/Text.h"

namespace {

using velto::sandbox::Error;
using velto::sandbox::Json;

constexpr const char* kHelp =
    R"(velto-sandbox - a local HTTPS ad server for applications that use Velto

usage: velto-sandbox [options]

  --port N           listen on 127.0.0.1, port N; 0, the default, takes a free one
  --port-file FILE   write the port to FILE once requests are accepted
  --data DIR         folder of the certificates, made at first use
                     (default: $XDG_DATA_HOME/velto-sandbox or ~/.local/share/velto-sandbox)
  --scenario FILE    answer by the rules of FILE; may be given several times, earlier files go first.
                     Without any, the built-in scenario answers
  --serve DIR        hand out the files of DIR for downloads that no rule answers
  --log FILE         append the recorded requests to FILE instead of writing them to standard output
  --strict           answer 400 with a list of what is wrong to requests that a real server would not expect
  --ad-server NAME   host name of the ad server (default: ads.velto.example)
  --publishers NAME  domain of the custom endpoints (default: publishers.velto.example)
  --tracking NAME    host name of the tracking server (default: track.velto.example)
  --print-ca         print the certificate to trust (PEM), and end
  --print-scenario   print the built-in scenario, an example of the format, and end
  --help             print this text, and end

Getting started: start velto-sandbox. Its first line of output names the port and the certificate file:
  {"event":"listening","host":"127.0.0.1","port":41234,"ca":".../ca.pem"}
Make the client trust that certificate and send the three host names to 127.0.0.1 and that port. With curl:
  curl --cacert .../ca.pem --connect-to ::127.0.0.1:41234 https://track.velto.example/trk_click.php?id=x
Then every request appears as one line of JSON: kind, host, path, query, headers, body, the rule that
answered, the status, and "problems", the list of what a real server would not expect in it.

The built-in scenario answers ad requests with a small page of the size asked for. These publisher keys ask
for something else: nofill, nofill-page, error, notfound, cut, nosize, mraid, mediation, slow.

A scenario file is a JSON object with a list of rules; the first that matches answers:
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
            and request

Exit codes: 0 after SIGINT or SIGTERM, 2 when something given is wrong.
)";

struct Arguments {
  velto::sandbox::Options options;
  std::string logFile;
  std::string portFile;
  bool printCa = false;
  bool printScenario = false;
  bool help = false;
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

Arguments parse(const std::vector<std::string>& words) {
  Arguments arguments;
  for (std::size_t i = 0; i < words.size(); ++i) {
    const std::string& option = words[i];
    const auto value = [&]() -> const std::string& {
      if (i + 1 == words.size() || words[i + 1].empty()) throw Error(option + ": needs a value");
      return words[++i];
    };
    velto::sandbox::Options& options = arguments.options;
    if (option == "--port") {
      options.port = portNumber(value());
    } else if (option == "--port-file") {
      arguments.portFile = value();
    } else if (option == "--data") {
      options.dataFolder = value();
    } else if (option == "--scenario") {
      options.scenarioFiles.push_back(value());
    } else if (option == "--serve") {
      options.serveFolder = value();
    } else if (option == "--log") {
      arguments.logFile = value();
    } else if (option == "--strict") {
      options.strict = true;
    } else if (option == "--ad-server") {
      options.names.adServer = hostName(option, value());
    } else if (option == "--publishers") {
      options.names.publishers = hostName(option, value());
    } else if (option == "--tracking") {
      options.names.tracking = hostName(option, value());
    } else if (option == "--print-ca") {
      arguments.printCa = true;
    } else if (option == "--print-scenario") {
      arguments.printScenario = true;
    } else if (option == "--help" || option == "-h") {
      arguments.help = true;
    } else {
      throw Error("unknown option \"" + option + "\" (see --help)");
    }
  }
  return arguments;
}

int run(Arguments arguments) {
  if (arguments.help) {
    std::cout << kHelp;
    return 0;
  }
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
  try {
    return run(parse({words + 1, words + count}));
  } catch (const std::exception& error) {
    std::cerr << "velto-sandbox: " << error.what() << '\n';
    return 2;
  }
}
