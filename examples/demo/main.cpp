// The demo program: by hand, or with --tour by itself. scripts/demo starts it together with the sandbox
// server.
#include <velto/gtk/VeltoGtk.h>
#include <velto/velto.h>

#include <cstdio>
#include <optional>
#include <stdexcept>

#include "DriftwoodAdapter.h"
#include "Tour.h"

namespace {

constexpr char help[] =
    R"(velto-demo - banners of every size and place, interstitials, a video ad

usage: velto-demo --server ADDRESS --ca FILE [options]

  --server ADDRESS  where velto-sandbox listens, such as 127.0.0.1:8443
  --ca FILE         the certificate to trust, as velto-sandbox names it
  --application COMMAND
                    starts the application with the GObject library; it is given the options above and below
  --data FOLDER     where the library keeps its store (default: a folder of the user's data)
  --tour            play by itself, check what happens, and end
  --out FOLDER      where the tour puts its pictures (default: out/demo)

Exit codes: 0; 1 when the tour missed something; 2 when something given is wrong.
)";

struct Arguments {
  std::string server;
  std::string ca;
  std::string application;
  std::string data;
  std::string out = "out/demo";
  bool tour = false;
};

Arguments parse(int count, char** words) {
  Arguments arguments;
  for (int i = 1; i < count; ++i) {
    const std::string option = words[i];
    if (option == "--tour") {
      arguments.tour = true;
      continue;
    }
    std::string* target = option == "--server"        ? &arguments.server
                          : option == "--ca"          ? &arguments.ca
                          : option == "--application" ? &arguments.application
                          : option == "--data"        ? &arguments.data
                          : option == "--out"         ? &arguments.out
                                                      : nullptr;
    if (!target) throw std::invalid_argument("unknown option \"" + option + "\" (see --help)");
    if (++i == count || !*words[i]) throw std::invalid_argument(option + ": needs a value");
    *target = words[i];
  }
  if (arguments.server.empty() || arguments.ca.empty())
    throw std::invalid_argument("--server and --ca are needed (see --help)");
  return arguments;
}

int play(demo::Stage& stage, const demo::LinkTrap& links, const std::string& out) {
  const auto missing = demo::Tour(stage, links, out).run();
  for (const auto& what : missing) std::fprintf(stderr, "missing: %s\n", what.c_str());
  std::printf("%s; pictures in %s\n", missing.empty() ? "everything happened as expected" : "the tour failed",
              out.c_str());
  return missing.empty() ? 0 : 1;
}

// A process of its own, as the GObject library holds another copy of all of Velto. In a tour it plays by itself, and false
// says that it missed something.
bool startApplication(const Arguments& arguments) {
  g_unsetenv("VELTO_TRACE");  // that file is this process's
  char** words = nullptr;
  GStrvBuilder* builder = g_strv_builder_new();
  if (g_shell_parse_argv(arguments.application.c_str(), nullptr, &words, nullptr))
    g_strv_builder_addv(builder, const_cast<const char**>(words));
  g_strfreev(words);
  g_strv_builder_add_many(builder, "--server", arguments.server.c_str(), "--ca", arguments.ca.c_str(),
                          nullptr);
  if (!arguments.data.empty())
    g_strv_builder_add_many(builder, "--data", (arguments.data + "/application").c_str(), nullptr);
  if (arguments.tour) g_strv_builder_add_many(builder, "--tour", arguments.out.c_str(), nullptr);
  words = g_strv_builder_end(builder);
  g_strv_builder_unref(builder);
  GError* error = nullptr;
  int status = 0;
  const bool runs = arguments.tour ? g_spawn_sync(nullptr, words, nullptr, G_SPAWN_SEARCH_PATH, nullptr,
                                                  nullptr, nullptr, nullptr, &status, &error) &&
                                         g_spawn_check_wait_status(status, &error)
                                   : g_spawn_async(nullptr, words, nullptr, G_SPAWN_SEARCH_PATH, nullptr,
                                                   nullptr, nullptr, &error);
  g_strfreev(words);
  if (error) std::fprintf(stderr, "missing: the application: %s\n", error->message);
  g_clear_error(&error);
  return runs;
}

int run(const Arguments& arguments) {
  std::optional<demo::LinkTrap> links;
  if (arguments.tour) links.emplace();
  if (!gtk_init_check()) throw std::runtime_error("there is no display");
  velto::gtk::install(
      {.applicationIdentifier = "org.example.velto.demo",
       .dataFolder = arguments.data,
       .caFile = arguments.ca,
       .hostMap = {{"ads.velto.example", arguments.server}, {"track.velto.example", arguments.server}},
       .leastTimeUnderTouch =
           std::chrono::milliseconds(arguments.tour ? 0 : 300),  // its hand waits for nothing
       .mayReachLocalNetwork = true});  // where the ads' pictures and videos come from
  linkDriftwoodAdapter();
  velto::VeltoFramework::addVeltoKey("demo");
  int code = 0;
  {
    std::function<void()> application;
    if (!arguments.application.empty()) application = [&] { startApplication(arguments); };
    demo::Stage stage(application);
    if (links) {
      code = play(stage, *links, arguments.out);
    } else {
      stage.show("bottom");
      while (stage.isOpen()) g_main_context_iteration(nullptr, TRUE);
    }
  }
  unlinkDriftwoodAdapter();
  velto::gtk::uninstall();
  if (links && !arguments.application.empty() && !startApplication(arguments)) code = 1;
  return code;
}

}  // namespace

int main(int count, char** words) {
  if (count == 2 && std::string(words[1]) == "--help") {
    std::fputs(help, stdout);
    return 0;
  }
  try {
    return run(parse(count, words));
  } catch (const std::exception& error) {
    std::fprintf(stderr, "velto-demo: %s\n", error.what());
    return 2;
  }
}
