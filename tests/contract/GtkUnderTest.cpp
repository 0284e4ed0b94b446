// The Linux platform under the contract: real windows on the display that with-display starts, xdotool's
// finger, a plain HTTP server in this process. And what only a store on a disk has to prove; this program is
// its own second process.
#include "velto/gtk/store/DefaultsStore.h"
#include "velto/platform/NSUserDefaults.h"

#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <iostream>

#include "../support/AdWindow.h"
#include "../support/LoopbackServer.h"
#include "../support/WebProcesses.h"
#include "PlatformUnderTest.h"
#include "TestServer.h"

namespace velto {
namespace {

bool standsInSlot = false;  // --slot: what is shown is so in a slot that fills its window

void installOn(const std::string& folder) {
  gtk::install({.applicationIdentifier = "org.example.contract",
                .dataFolder = folder,
                .leastTimeUnderTouch = {},
                .mayReachLocalNetwork = true});
}

class GtkUnderTest : public PlatformUnderTest {
 public:
  GtkUnderTest() {
    const auto handler = [this](const auto& request, auto& response) { answer(request, response); };
    server_->Get(".*", handler).Post(".*", handler);
    server_.start();
  }
  void install() override {
    folder_ = std::make_unique<test::TemporaryFolder>();
    relaunch();
  }
  void relaunch() override { installOn(folder_->path()); }
  void uninstall() override {
    gtk::uninstall();
    if (auto* window = std::exchange(window_, nullptr)) gtk_window_destroy(window);
  }
  bool runUntil(const std::function<bool()>& condition) override { return test::runUntil(condition); }
  std::shared_ptr<UIViewController> showWindow() override {
    auto* content = standsInSlot ? gtk::adSlot({.room = CGSize{480, 640}}) : gtk_label_new("content");
    window_ = test::newWindow(480, 640, content);
    const auto host = test::present(window_);
    if (!standsInSlot) return host;
    const auto slot = gtk::hostViewController(content);
    EXPECT_TRUE(runUntil([&] { return slot->view()->bounds().size == host->view()->bounds().size; }));
    return slot;
  }
  void tap(CGPoint point) override { test::click(window_, point); }
  std::string server() override { return server_.address(); }
  std::string refusingServer() override { return "http://127.0.0.1:1"; }
  bool runsPages() const override { return true; }
  void killPages() override {
    int killed = 0;
    for (const auto process : test::webProcesses()) killed += kill(process, SIGKILL) == 0;
    EXPECT_GT(killed, 0) << "no web process of ours";
  }

 private:
  void answer(const httplib::Request& request, httplib::Response& response) {
    const auto answer = serverAnswer(
        request.method, request.path, [&](const char* name) { return request.get_header_value(name); },
        request.body);
    response.status = answer.status;
    for (const auto& [name, value] : answer.headers) response.set_header(name, value);
    if (answer.never) server_.waitForEnd();
    if (answer.body.empty()) return;
    response.set_content_provider(answer.body.size() + (answer.cutShort ? 100 : 0), "text/plain",
                                  [body = answer.body](size_t, size_t promised, httplib::DataSink& sink) {
                                    sink.write(body.data(), body.size());
                                    return body.size() == promised;
                                  });
  }

  test::LoopbackServer server_;
  std::unique_ptr<test::TemporaryFolder> folder_;
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
  const test::TemporaryFolder folder;
  installOn(folder.path());
  auto& store = Platform::current().standardUserDefaults();
  store.setObject("mine", "kept");
  test::Process writer({std::filesystem::read_symlink("/proc/self/exe"), "--write-store", folder.path()});
  int last = -1;
  while (const auto line = writer.line())  // what it acknowledged before it died is still read
    if ((last = std::stoi(*line)) == 60) writer.signal(SIGKILL);
  ASSERT_GE(last, 60);
  EXPECT_GE(std::get<double>(store.objectForKey("last").value()), last);
  const auto entries = std::get<DefaultsDictionary>(store.objectForKey("entries").value());
  for (int i = 0; i <= last; ++i) EXPECT_EQ(entries.at(std::to_string(i)), "filling");
  EXPECT_EQ(store.objectForKey("mine"), DefaultsValue("kept"));
  gtk::uninstall();
}

// Whether a value that is stored there is found again by the next run, and in what file.
bool keeps(const std::string& folder) {
  const auto value = [] { return Platform::current().standardUserDefaults().objectForKey("key"); };
  installOn(folder);
  try {
    Platform::current().standardUserDefaults().setObject("key", "value");
  } catch (const std::runtime_error&) {
    EXPECT_FALSE(value());
  }
  installOn(folder);
  const bool found = value().has_value();
  gtk::uninstall();
  return found;
}

TEST(GtkStore, OpenedAheadItIsTheSameForWhomeverComesFirst) {
  using gtk::DefaultsStore;
  constexpr auto ahead = DefaultsStore::Opening::Ahead;
  const test::TemporaryFolder folder;
  const auto path = folder.path("defaults.sqlite3");
  { const DefaultsStore unused(folder.path("unused"), ahead); }
  EXPECT_TRUE(std::filesystem::exists(folder.path("unused"))) << "nobody had to use it";
  for (int i = 0; i < 20; ++i) {
    DefaultsStore store(path, ahead);
    const DefaultsStore other(path, ahead);  // the first time both make the file
    const auto found = store.objectForKey("count");
    EXPECT_EQ(found ? std::get<double>(*found) : 0, i);
    store.setObject("count", i + 1.0);
    EXPECT_TRUE(other.objectForKey("count") == DefaultsValue(i + 1.0));
  }
  folder.write("broken", std::string(9000, 'x'));
  DefaultsStore broken(folder.path("broken"), ahead);
  EXPECT_FALSE(broken.objectForKey("count"));
  EXPECT_NO_THROW(broken.setObject("count", 1.0)) << "a new one takes its place";

  const auto taken = folder.write("file", "where a folder should be");
  DefaultsStore nowhere(taken + "/defaults.sqlite3", ahead);
  EXPECT_FALSE(nowhere.objectForKey("count"));
  EXPECT_THROW(nowhere.setObject("count", 1.0), std::runtime_error);
  std::filesystem::remove(taken);
  EXPECT_NO_THROW(nowhere.setObject("count", 1.0)) << "the next use tries again";
  EXPECT_TRUE(nowhere.objectForKey("count") == DefaultsValue(1.0));
}

TEST(GtkStore, KeepsNothingWhereOthersWriteAndDiesNowhere) {
  namespace fs = std::filesystem;
  const auto own = fs::temp_directory_path();  // may be inside a folder that is closed to others
  setenv("TMPDIR", "/tmp", 1);
  const test::TemporaryFolder folder;
  setenv("TMPDIR", own.c_str(), 1);
  const auto file = [&](const std::string& name) { return folder.path(name) + "/defaults.sqlite3"; };
  umask(0);
  EXPECT_TRUE(keeps(folder.path("new")));
  for (const char* companion : {"", "-wal", "-shm"})
    if (const auto path = file("new") + companion; fs::exists(path)) {
      EXPECT_EQ(fs::status(path).permissions(), fs::perms(0600)) << path;
    }

  const auto secret = folder.write("secret", "not a store");
  for (const char* name : {"linked", "open", "pipe"}) fs::create_directory(folder.path(name));
  fs::create_symlink(secret, file("linked"));
  fs::permissions(folder.path("open"), fs::perms::all | fs::perms::sticky_bit);
  mkfifo(file("pipe").c_str(), 0600);
  fs::create_symlink(folder.path("round"), folder.path("round"));
  const std::string deep = folder.path(std::string(200, 'x'));
  std::string endless = deep;
  while (endless.size() < 9000) endless += deep;
  for (const auto& hostile :
       {folder.path("linked"), folder.path("open"), folder.path("pipe"), folder.path("round"), secret,
        std::string("/dev/null"), std::string("/proc/none"), endless})
    EXPECT_FALSE(keeps(hostile)) << hostile;
  EXPECT_EQ(test::textOf(secret), "not a store");

  if (geteuid() != 0) GTEST_SKIP() << "only root can be two users";
  fs::permissions(folder.path(), fs::perms(0755));
  // Their group lets the other user write.
  fs::permissions(folder.path("new"), fs::perms(0770));
  fs::permissions(file("new"), fs::perms(0660));
  constexpr uid_t other = 65534;
  EXPECT_EQ(seteuid(other), 0);
  EXPECT_FALSE(keeps(folder.path("new"))) << "what another user has written is not believed";
  EXPECT_EQ(seteuid(0), 0);
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
  velto::standsInSlot = argc == 2 && std::string(argv[1]) == "--slot";
  return RUN_ALL_TESTS();
}
