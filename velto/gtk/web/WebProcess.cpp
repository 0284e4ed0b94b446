// Finding out about a process, and closing what lives in it.
#include "velto/gtk/web/WebProcess.h"

#include "velto/gtk/modules/PageMessages.h"
#include "velto/gtk/web/EngineProbe.h"

#include <unistd.h>

#include <algorithm>
#include <fstream>

namespace velto::gtk {
namespace {

constexpr int adsForProcess = 32;
constexpr uint64_t residentForProcess = uint64_t{300} << 20;  // bytes
constexpr guint longestSilence = 5;                           // seconds
constexpr guint engineWaited = 3;                             // of them, before it says so

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

// Those among these and, as the engine may put a sandbox's process or two between, among those that they started.
void collectWebProcesses(const std::vector<pid_t>& processes, int depth, std::vector<pid_t>& found) {
  for (const pid_t process : processes) {
    std::ifstream file("/proc/" + std::to_string(process) + "/comm");
    std::string name;
    std::getline(file, name);
    if (name.starts_with("WebKitWebProces"))
      found.push_back(process);  // the kernel keeps 15 characters
    else if (depth > 0)
      collectWebProcesses(childrenOf(process), depth - 1, found);
  }
}

uint64_t nextNumber() {
  static uint64_t numbers = 0;
  return ++numbers;
}

uint64_t residentBytes(pid_t process) {
  std::ifstream file("/proc/" + std::to_string(process) + "/statm");
  uint64_t size = 0;
  uint64_t resident = 0;
  file >> size >> resident;
  return resident * static_cast<uint64_t>(sysconf(_SC_PAGESIZE));
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

WebProcess::WebProcess(std::shared_ptr<bool> sessionHadPages)
    : number_(nextNumber()), sessionHadPages_(std::move(sessionHadPages)) {}

WebProcess::~WebProcess() {
  if (patience_) g_source_remove(patience_);
}

void WebProcess::startIn(const std::function<void()>& call) {
  if (hasPage_ || !started_.empty()) return call();
  const auto before = childrenOf(getpid());
  EngineProbe::starting(call);
  started_ = childrenOf(getpid());
  std::erase_if(started_,
                [&](pid_t child) { return std::find(before.begin(), before.end(), child) != before.end(); });
}

void WebProcess::pageArrived() {
  forgive();
  hasPage_ = true;
  identify();
}

// Where it cannot be told which one it is, only the count of ads decides about its room, and nothing is known of what it costs.
void WebProcess::identify() {
  if (pid_) return;
  std::vector<pid_t> found;
  collectWebProcesses(started_, 2, found);
  if (found.size() == 1) pid_ = found.front();
}

SharedView WebProcess::view() const {
  for (const auto& one : views_)
    if (auto view = one.lock()) return SharedView(std::move(view));
  return {};
}

bool WebProcess::areAllHidden() const {
  return std::ranges::none_of(views_, [](const auto& one) {
    const auto view = one.lock();
    return view && gtk_widget_get_mapped(GTK_WIDGET(view.get()));
  });
}

bool WebProcess::isResponsive() const {
  return std::ranges::none_of(views_, [](const auto& one) {
    const auto view = one.lock();
    return view && !webkit_web_view_get_is_web_process_responsive(view.get());
  });
}

// No statements at all are run at once, and answered. One that is still coming up answers by its first page: a message to it is
// lost if the view is closed before it is there, and the engine then keeps what belongs to the view for ever.
void WebProcess::ask() {
  const auto asked = view();
  if (owesAnswer_ || ended_ || ads_ == 0 || !asked) return;
  owesAnswer_ = true;
  waitFor(longestSilence);
  if (!hasPage_) return;
  auto* none = g_variant_new_array(G_VARIANT_TYPE("ay"), nullptr, 0);
  webkit_web_view_send_message_to_page(asked, webkit_user_message_new(page::run, none), nullptr, answered,
                                       new std::weak_ptr(weak_from_this()));
}

void WebProcess::answered(GObject* view, GAsyncResult* result, gpointer weak) noexcept {
  const std::unique_ptr<std::weak_ptr<WebProcess>> process(static_cast<std::weak_ptr<WebProcess>*>(weak));
  const auto answer = GPtr<WebKitUserMessage>::adopt(
      webkit_web_view_send_message_to_page_finish(WEBKIT_WEB_VIEW(view), result, nullptr));
  const auto self = process->lock();
  if (!self) return;
  self->owesAnswer_ = false;
  if (self->patience_ && self->isResponsive()) g_source_remove(std::exchange(self->patience_, 0));
}

void WebProcess::forgive() {
  owesAnswer_ = false;
  if (patience_) g_source_remove(std::exchange(patience_, 0));
}

void WebProcess::fellSilent() {
  waitFor(longestSilence - engineWaited);
}

void WebProcess::waitFor(guint seconds) {
  if (!patience_) patience_ = g_timeout_add_seconds(seconds, patienceEnded, this);
}

// With all pages in it: none of them would go on.
gboolean WebProcess::patienceEnded(gpointer process) noexcept {
  auto* self = static_cast<WebProcess*>(process);
  self->patience_ = 0;
  const auto view = self->view();
  if (!view || (!self->owesAnswer_ && self->isResponsive())) return G_SOURCE_REMOVE;
  // Whoever looks into a page with the engine's inspector may have stopped it.
  for (const auto& one : self->views_)
    if (const auto other = one.lock())
      if (webkit_settings_get_enable_developer_extras(webkit_web_view_get_settings(other.get())))
        return G_SOURCE_REMOVE;
  self->hung_ = true;
  webkit_web_view_terminate_web_process(view);
  return G_SOURCE_REMOVE;
}

void WebProcess::add(const SharedView& view) {
  std::erase_if(views_, [](const auto& one) { return one.expired(); });
  views_.push_back(view.held());
}

bool WebProcess::hasRoom() const {
  return !ended_ && !owesAnswer_ && ads_ < adsForProcess &&
         (!pid_ || residentBytes(pid_) < residentForProcess);
}

SharedView::SharedView(GPtr<WebKitWebView> view) {
  auto* engineView = view.get();
  const auto held = std::make_shared<GPtr<WebKitWebView>>(std::move(view));
  view_ = {engineView, [held](WebKitWebView*) { closeIfHeld(std::move(*held)); }};
}

}  // namespace velto::gtk
