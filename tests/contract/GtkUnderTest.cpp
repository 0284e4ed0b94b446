// The Linux platform under the contract: real windows on the display that with-display.sh starts, xdotool's
// finger, a plain HTTP server in this process. And what only a store on a disk has to prove; this program is
// its own second process.
#include "velto/gtk/VeltoGtk.h"
#include "velto/platform/NSUserDefaults.h"

#include <gtk/gtk.h>
#include <httplib.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <condition_variable>
#include <fstream>
#include <iostream>
#include <map>
#include <thread>

#include "PlatformUnderTest.h"
#include "TestServer.h"

// clang-format off: the X headers define words like Success as macros, so they come last
#include <gdk/x11/gdkx.h>
// clang-format on

namespace velto {
namespace {

// In the temporary folder of with-display.sh, which goes with it.
std::string newFolder() {
  std::string pattern = (std::filesystem::temp_directory_path() / "velto-store-XXXXXX").string();
  if (!mkdtemp(pattern.data())) throw std::runtime_error("no temporary folder");
  return pattern;
}

void installOn(const std::string& folder) {
  gtk::Options options;
  options.applicationIdentifier = "org.example.contract";
  options.dataFolder = folder;
  gtk::install(options);
}

class LoopbackServer {
 public:
  LoopbackServer() {
    const auto handler = [this](const auto& request, auto& response) { answer(request, response); };
    server_.Get(".*", handler).Post(".*", handler);
    port_ = server_.bind_to_any_port("127.0.0.1");
    thread_ = std::thread([this] { server_.listen_after_bind(); });
    while (!server_.is_running()) std::this_thread::yield();
  }
  ~LoopbackServer() {
    {
      std::lock_guard lock(mutex_);
      stopping_ = true;
    }
    stopped_.notify_all();
    server_.stop();
    thread_.join();
  }
  int port() const { return port_; }

 private:
  void answer(const httplib::Request& request, httplib::Response& response) {
    const auto answer = serverAnswer(
        request.method, request.path, [&](const char* name) { return request.get_header_value(name); },
        request.body);
    response.status = answer.status;
    for (const auto& [name, value] : answer.headers) response.set_header(name, value);
    std::unique_lock lock(mutex_);
    stopped_.wait(lock, [&] { return stopping_ || !answer.never; });
    if (answer.body.empty()) return;
    response.set_content_provider(answer.body.size() + (answer.cutShort ? 100 : 0), "text/plain",
                                  [body = answer.body](size_t, size_t promised, httplib::DataSink& sink) {
                                    sink.write(body.data(), body.size());
                                    return body.size() == promised;
                                  });
  }

  httplib::Server server_;
  int port_ = 0;
  std::mutex mutex_;
  std::condition_variable stopped_;
  bool stopping_ = false;
  std::thread thread_;
};

class GtkUnderTest : public PlatformUnderTest {
 public:
  void install() override {
    folder_ = newFolder();
    relaunch();
  }
  void relaunch() override { installOn(folder_); }
  void uninstall() override {
    gtk::uninstall();
    if (auto* window = std::exchange(window_, nullptr)) gtk_window_destroy(window);
  }
  bool runUntil(const std::function<bool()>& condition) override {
    bool expired = false;
    const auto expire = [](gpointer flag) -> gboolean { return *static_cast<bool*>(flag) = true; };
    const guint deadline = g_timeout_add_seconds(20, expire, &expired);
    while (!condition() && !expired) g_main_context_iteration(nullptr, TRUE);
    g_source_remove(deadline);
    return condition();
  }
  std::shared_ptr<UIViewController> showWindow() override {
    window_ = GTK_WINDOW(gtk_window_new());
    gtk_window_set_decorated(window_, false);
    gtk_window_set_default_size(window_, 480, 640);
    gtk_window_set_child(window_, gtk_label_new("content"));
    auto controller = gtk::hostViewController(window_);
    gtk_window_present(window_);
    const auto& root = *controller->view();
    EXPECT_TRUE(runUntil([&] { return root.isInWindow() && root.bounds().size.height >= 600; }));
    return controller;
  }
  void tap(CGPoint point) override {
    auto* surface = gtk_native_get_surface(GTK_NATIVE(window_));
    const auto line = "xdotool mousemove --window " + std::to_string(gdk_x11_surface_get_xid(surface)) + " " +
                      std::to_string(std::lround(point.x)) + " " + std::to_string(std::lround(point.y)) +
                      " click 1";
    int status = -1;
    ASSERT_TRUE(g_spawn_command_line_sync(line.c_str(), nullptr, nullptr, &status, nullptr)) << line;
    ASSERT_EQ(status, 0) << line;
  }
  std::string server() override { return "http://127.0.0.1:" + std::to_string(server_.port()); }
  std::string refusingServer() override { return "http://127.0.0.1:1"; }
  bool runsPages() const override { return true; }
  void killPages() override {
    // Engines may put processes of a sandbox between this one and theirs, so all descendants count.
    std::map<std::string, std::string> parents;
    std::vector<std::string> found;
    for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
      std::ifstream stat(entry.path() / "stat");
      std::string pid, name, state, parent;
      if (!(stat >> pid >> name >> state >> parent)) continue;
      parents[pid] = parent;
      if (name.starts_with("(WebKitWebProces")) found.push_back(pid);
    }
    int killed = 0;
    for (const auto& pid : found) {
      auto ancestor = pid;
      while (parents.contains(ancestor) && ancestor != std::to_string(getpid())) ancestor = parents[ancestor];
      if (ancestor == std::to_string(getpid()) && kill(std::stoi(pid), SIGKILL) == 0) ++killed;
    }
    EXPECT_GT(killed, 0) << "no web process of ours";
  }

 private:
  LoopbackServer server_;
  std::string folder_;
  GtkWindow* window_ = nullptr;
};

// The second process: writes for ever, with a line on standard output for each change that is safe.
[[noreturn]] void writeStore(const char* folder) {
  installOn(folder);
  auto& store = Platform::current().standardUserDefaults();
  for (int i = 0; std::cout; ++i) {
    store.setEntry("entries", std::to_string(i), "filling");
    store.setObject("last", static_cast<double>(i));
    store.synchronize();
    std::cout << i << std::endl;
  }
  _exit(1);
}

TEST(GtkStore, AKillLosesNothingThatWasAcknowledgedAndProcessesShare) {
  std::string folder = newFolder();
  std::string program = std::filesystem::read_symlink("/proc/self/exe").string();
  installOn(folder);
  auto& store = Platform::current().standardUserDefaults();
  store.setObject("mine", "kept");
  for (const int enough : {1, 20, 60}) {
    char* argv[] = {program.data(), const_cast<char*>("--write-store"), folder.data(), nullptr};
    GPid child = 0;
    int output = -1;
    ASSERT_TRUE(g_spawn_async_with_pipes(nullptr, argv, nullptr, G_SPAWN_DO_NOT_REAP_CHILD, nullptr, nullptr,
                                         &child, nullptr, &output, nullptr, nullptr));
    FILE* lines = fdopen(output, "r");
    int last = -1;
    while (fscanf(lines, "%d", &last) == 1)
      if (last == enough) kill(child, SIGKILL);  // what it acknowledged before it died is still read
    fclose(lines);
    waitpid(child, nullptr, 0);
    ASSERT_GE(last, enough);

    EXPECT_GE(std::get<double>(store.objectForKey("last").value()), last);
    const auto entries = std::get<DefaultsDictionary>(store.objectForKey("entries").value());
    for (int i = 0; i <= last; ++i) EXPECT_EQ(entries.at(std::to_string(i)), "filling");
    EXPECT_EQ(store.objectForKey("mine"), DefaultsValue("kept"));
    store.removeObjectForKey("entries");
  }
  gtk::uninstall();
}

}  // namespace

std::unique_ptr<PlatformUnderTest> makePlatformUnderTest() {
  return std::make_unique<GtkUnderTest>();
}

}  // namespace velto

int main(int argc, char** argv) {
  gtk_init();
  if (argc == 3 && std::string(argv[1]) == "--write-store") velto::writeStore(argv[2]);
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
