// Running what the engine would run first.
#include "velto/gtk/web/EngineProbe.h"

#include "velto/gtk/Modules.h"
#include "velto/gtk/Threads.h"
#include "velto/gtk/modules/PageMessages.h"
#include "velto/gtk/web/EngineMemory.h"
#include "velto/platform/Platform.h"
#include "velto/platform/foundation/GMemory.h"

#include <glib.h>
#include <link.h>

#include <algorithm>
#include <string_view>
#include <thread>
#include <utility>

namespace velto::gtk {
namespace {

constexpr char withoutSandbox[] = "WEBKIT_DISABLE_SANDBOX_THIS_IS_DANGEROUS";

constexpr std::chrono::seconds longestWait{5};

struct EngineLibrary {
  bool isDistributions = false;
  bool hasSandbox = false;  // which takes a filter of system calls
};

EngineLibrary engineLibrary() {
  EngineLibrary library;
  dl_iterate_phdr(
      [](dl_phdr_info* info, size_t, void* data) {
        auto& found = *static_cast<EngineLibrary*>(data);
        const std::string_view path = info->dlpi_name ? info->dlpi_name : "";
        const auto name = path.substr(path.rfind('/') + 1);
        if (name.starts_with("libwebkitgtk-"))
          found.isDistributions = path.starts_with("/usr/") || path.starts_with("/lib");
        found.hasSandbox |= name.starts_with("libseccomp.");
        return 0;
      },
      &library);
  return library;
}

// The bus proxy comes first, in a sandbox with this much of its own. It ends at once when it is only asked for its version.
// Nothing of the machine is shown to it but where programs and their libraries are, as the engine does: somewhere may be a
// network's or a person's file system that hangs.
std::vector<std::string> firstOfTheEngine(const std::string& sandbox, const std::string& proxy) {
  const auto top = proxy.substr(0, proxy.find('/', 1));
  return {sandbox,
          "--die-with-parent",
          "--unshare-uts",
          "--unshare-pid",
          "--unshare-ipc",
          "--ro-bind",
          top,
          top,
          "--ro-bind-try",
          "/lib",
          "/lib",
          "--ro-bind-try",
          "/lib64",
          "/lib64",
          "--ro-bind-try",
          "/etc",
          "/etc",
          "--dev",
          "/dev",
          "--proc",
          "/proc",
          "--",
          proxy,
          "--version"};
}

// Where distributions have it, whatever the application's path is. Nothing: only the engine knows where it is.
std::optional<std::string> programNamed(const std::string& name, const EngineLibrary& engine) {
  auto usual = "/usr/bin/" + name;
  if (g_file_test(usual.c_str(), G_FILE_TEST_EXISTS)) return usual;
  const GText found(g_find_program_in_path(name.c_str()));
  if (found) return found.get();
  return engine.isDistributions ? std::optional(usual) : std::nullopt;
}

// Nothing: it need not be tried, or cannot be.
struct Sandbox {
  std::string program, proxy;
};

std::optional<Sandbox> sandboxOfEngine() {
  const auto engine = engineLibrary();
  const auto program = programNamed("bwrap", engine), proxy = programNamed("xdg-dbus-proxy", engine);
  if (!engine.hasSandbox || !program || !proxy) return std::nullopt;
  return Sandbox{*program, *proxy};
}

// Written by the probe's thread, and the main thread's once that is over.
std::optional<EngineMemory>& memory() {
  static std::optional<EngineMemory> found;
  return found;
}

std::optional<std::string> hindranceOfSandbox(const std::optional<std::string>& kept) {
  const auto sandbox = sandboxOfEngine();
  if (!sandbox) return std::nullopt;
  memory().emplace(std::vector{sandbox->program, sandbox->proxy});
  if (memory()->isSameAs(kept)) return std::nullopt;
  return hindranceOf(firstOfTheEngine(sandbox->program, sandbox->proxy));
}

EngineProbe::Look look() {
  if (findModuleFile(page::moduleFile).empty())
    return [] { return std::string(page::moduleFile) + " of this library is not installed"; };
  if (isEngineWithoutSandbox()) return {};
  return [kept = EngineMemory::kept()] { return hindranceOfSandbox(kept); };
}

gboolean keep(gpointer) noexcept {
  if (auto kept = std::exchange(memory(), std::nullopt); kept && Platform::currentOrNull()) kept->keep();
  return G_SOURCE_REMOVE;
}

}  // namespace

// Any value but "0" switches it off, also none.
bool isEngineWithoutSandbox() {
  const char* disabled = g_getenv(withoutSandbox);
  if (disabled && g_strcmp0(disabled, "0") != 0) return true;
  return g_file_test("/.flatpak-info", G_FILE_TEST_EXISTS) ||
         g_file_test("/run/.containerenv", G_FILE_TEST_EXISTS) || g_getenv("SNAP");
}

std::optional<std::string> hindranceOf(const std::vector<std::string>& command) {
  std::vector<char*> words;
  for (const auto& word : command) words.push_back(const_cast<char*>(word.c_str()));
  words.push_back(nullptr);
  char* written = nullptr;
  GError* failure = nullptr;
  int status = 0;
  // Which spares a copy of this process's memory; what is not to be inherited is marked so, the pipe for the words too: the
  // engine may start a process just now, and would hold it open.
  constexpr auto flags =
      GSpawnFlags(G_SPAWN_STDOUT_TO_DEV_NULL | G_SPAWN_LEAVE_DESCRIPTORS_OPEN | G_SPAWN_CLOEXEC_PIPES);
  const bool ran = g_spawn_sync(nullptr, words.data(), nullptr, flags, nullptr, nullptr, nullptr, &written,
                                &status, &failure) &&
                   g_spawn_check_wait_status(status, &failure);
  const GText text(written);
  const GErrorOwned error(failure);
  if (ran) return std::nullopt;
  std::string line = text ? text.get() : "";
  line.resize(std::min(line.find('\n'), line.size()));
  return line.empty() ? error->message : line;
}

EngineProbe& EngineProbe::shared() {
  // For ever: its thread may outlive main().
  static auto* probe = new EngineProbe(look(), longestWait);
  return *probe;
}

void EngineProbe::starting(const std::function<void()>& process) {
  const bool isKnown = shared().isOver() && memory();
  if (isKnown && memory()->recall()) memory()->forget();
  process();
  if (isKnown) g_idle_add_full(G_PRIORITY_LOW, keep, nullptr, nullptr);  // nobody waits for it
}

EngineProbe::EngineProbe(const Look& look, std::chrono::milliseconds patience)
    : patientUntil_(std::chrono::steady_clock::now() + patience) {
  std::promise<std::optional<std::string>> promise;
  answer_ = promise.get_future().share();
  if (!look) {
    promise.set_value(std::nullopt);
    return;
  }
  std::thread([this, look, promise = std::move(promise)]() mutable {
    beginThread("velto-probe");
    promise.set_value(look());
    g_idle_add_full(G_PRIORITY_DEFAULT, over, this, nullptr);
  }).detach();
}

bool EngineProbe::isOver() const {
  return answer_.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
}

std::optional<std::string> EngineProbe::hindrance() const {
  if (answer_.wait_until(patientUntil_) != std::future_status::ready) return "The sandbox does not start";
  return answer_.get();
}

Handle EngineProbe::whenOver(std::function<void()> call) {
  auto kept = std::make_shared<std::function<void()>>(std::move(call));
  calls_.push_back(kept);
  return Handle([kept]() mutable { kept.reset(); });
}

int EngineProbe::over(void* self) noexcept {
  for (const auto& weak : std::exchange(static_cast<EngineProbe*>(self)->calls_, {}))
    if (const auto call = weak.lock()) (*call)();
  return G_SOURCE_REMOVE;
}

}  // namespace velto::gtk
