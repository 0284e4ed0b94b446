// Web processes: bringing up, sharing, leaving behind.
#include "velto/gtk/web/WebProcesses.h"

#include "velto/gtk/web/WebSession.h"

#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <string>

namespace velto::gtk {
namespace {

constexpr int adsForProcess = 32;
constexpr uint64_t residentForProcess = uint64_t{300} << 20;  // bytes

// The kernel's list for each thread costs far less than a walk through all processes of the machine.
std::vector<pid_t> childrenOf(pid_t process) {
  std::vector<pid_t> children;
  const std::string tasks = "/proc/" + std::to_string(process) + "/task/";
  const GOwned<GDir, g_dir_close> folder(g_dir_open(tasks.c_str(), 0, nullptr));
  while (const char* task = folder ? g_dir_read_name(folder.get()) : nullptr) {
    std::ifstream list(tasks + task + "/children");
    for (pid_t child = 0; list >> child;) children.push_back(child);
  }
  return children;
}

// The engine may put a sandbox's process or two between this one and its own.
void collectWebProcesses(pid_t process, int depth, std::vector<pid_t>& found) {
  for (const pid_t child : childrenOf(process)) {
    std::ifstream file("/proc/" + std::to_string(child) + "/comm");
    std::string name;
    std::getline(file, name);
    if (name.starts_with("WebKitWebProces"))
      found.push_back(child);  // the kernel keeps 15 characters
    else if (depth > 0)
      collectWebProcesses(child, depth - 1, found);
  }
}

std::vector<pid_t> webProcesses() {
  std::vector<pid_t> found;
  collectWebProcesses(getpid(), 2, found);
  return found;
}

uint64_t residentBytes(pid_t process) {
  std::ifstream file("/proc/" + std::to_string(process) + "/statm");
  uint64_t size = 0;
  uint64_t resident = 0;
  file >> size >> resident;
  return resident * static_cast<uint64_t>(sysconf(_SC_PAGESIZE));
}

// A view has user scripts of its own, also where all else comes from a related one.
template <class... Properties>
GPtr<WebKitWebView> newWebView(Properties... properties) {
  const auto scripts = GPtr<WebKitUserContentManager>::adopt(webkit_user_content_manager_new());
  return GPtr<WebKitWebView>::sink(WEBKIT_WEB_VIEW(
      g_object_new(WEBKIT_TYPE_WEB_VIEW, "user-content-manager", scripts.get(), properties..., nullptr)));
}

gboolean closeHeld(gpointer weak) noexcept {
  const auto view = GPtr<GObject>::adopt(static_cast<GObject*>(g_weak_ref_get(static_cast<GWeakRef*>(weak))));
  if (view) g_object_run_dispose(view);
  return G_SOURCE_REMOVE;
}

void freeWeak(gpointer weak) noexcept {
  g_weak_ref_clear(static_cast<GWeakRef*>(weak));
  delete static_cast<GWeakRef*>(weak);
}

// A statement that was lost in a change of processes is never answered, and its call holds the view for ever.
// The view may also be held by a signal of its own that is on the way, so it is closed only after that.
void closeIfHeld(GPtr<WebKitWebView> view) {
  auto* weak = new GWeakRef;
  g_weak_ref_init(weak, view.get());
  view.reset();
  g_idle_add_full(G_PRIORITY_DEFAULT, closeHeld, weak, freeWeak);
}

}  // namespace

WebProcess::WebProcess() : before_(webProcesses()) {}

// The engine does not tell which process is whose: it is the one that is new. With more than one (the
// application has web views too) its size stays unknown, and only the count of ads decides.
void WebProcess::pageArrived() {
  if (pid_) return;
  std::vector<pid_t> fresh;
  for (const pid_t process : webProcesses())
    if (std::find(before_.begin(), before_.end(), process) == before_.end()) fresh.push_back(process);
  if (fresh.size() == 1) pid_ = fresh.front();
}

bool WebProcess::hasRoom() const {
  return !ended_ && ads_ < adsForProcess && (!pid_ || residentBytes(pid_) < residentForProcess);
}

SharedView::SharedView(GPtr<WebKitWebView> view) {
  auto* engineView = view.get();
  const auto held = std::make_shared<GPtr<WebKitWebView>>(std::move(view));
  view_ = {engineView, [held](WebKitWebView*) { closeIfHeld(std::move(*held)); }};
}

Engine::Engine(GPtr<WebKitWebView> webView, std::shared_ptr<WebProcess> itsProcess)
    : view(std::move(webView)), process(std::move(itsProcess)) {}

Engine& Engine::operator=(Engine&& other) noexcept {
  std::swap(view, other.view);
  std::swap(related, other.related);
  std::swap(process, other.process);
  std::swap(warm, other.warm);
  return *this;
}

// Left to itself a process leaves when it has nothing more to do; one whose page hangs in a loop never does.
Engine::~Engine() {
  if (view && process.use_count() == 1) webkit_web_view_terminate_web_process(view);
}

Engine freshEngine(WebSession& session) {
  auto process = std::make_shared<WebProcess>();
  const auto context = session.context();
  return Engine(newWebView("web-context", context.get(), "network-session", session.network()),
                std::move(process));
}

Engine relatedEngine(const Engine& other) {
  Engine made(newWebView("related-view", other.view.get()), other.process);
  made.related = other.view;
  made.warm = true;
  return made;
}

PreparedEngine::PreparedEngine(WebSession& session, guint secondsToLive) : engine_(freshEngine(session)) {
  g_signal_connect(engine_.view, "web-process-terminated", G_CALLBACK(terminated), this);
  timer_ = g_timeout_add_seconds(secondsToLive, timedOut, this);
  // A statement brings the process up like a page would, and leaves nothing behind for the ad to wait for.
  webkit_web_view_evaluate_javascript(engine_.view, "0", -1, nullptr, nullptr, nullptr, nullptr, nullptr);
}

PreparedEngine::~PreparedEngine() {
  letGo();
}

void PreparedEngine::letGo() {
  if (timer_) g_source_remove(std::exchange(timer_, 0));
  if (engine_.view) g_signal_handlers_disconnect_by_data(engine_.view, this);
  const Engine gone = std::move(engine_);
}

std::optional<Engine> PreparedEngine::take() {
  if (!engine_.view) return std::nullopt;
  g_signal_handlers_disconnect_by_data(engine_.view, this);
  Engine taken = std::move(engine_);
  taken.warm = true;
  letGo();
  return taken;
}

void PreparedEngine::terminated(WebKitWebView*, WebKitWebProcessTerminationReason,
                                PreparedEngine* self) noexcept {
  self->letGo();
}

gboolean PreparedEngine::timedOut(gpointer self) noexcept {
  auto& prepared = *static_cast<PreparedEngine*>(self);
  prepared.timer_ = 0;
  prepared.letGo();
  return G_SOURCE_REMOVE;
}

}  // namespace velto::gtk
