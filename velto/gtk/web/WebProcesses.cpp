// Web processes: bringing up, sharing, leaving behind.
#include "velto/gtk/web/WebProcesses.h"

#include "velto/gtk/modules/PageMessages.h"
#include "velto/gtk/web/EngineProbe.h"
#include "velto/gtk/web/WebGuards.h"
#include "velto/gtk/web/WebSession.h"

namespace velto::gtk {
namespace {

// A view has user scripts and settings of its own, also where all else comes from a related one.
template <class... Properties>
GPtr<WebKitWebView> newWebView(Properties... properties) {
  const auto scripts = GPtr<WebKitUserContentManager>::adopt(webkit_user_content_manager_new());
  const auto settings = guardedSettings();
  return GPtr<WebKitWebView>::sink(
      WEBKIT_WEB_VIEW(g_object_new(WEBKIT_TYPE_WEB_VIEW, "user-content-manager", scripts.get(), "settings",
                                   settings.get(), properties..., nullptr)));
}

}  // namespace

Engine::Engine(GPtr<WebKitWebView> webView, std::shared_ptr<WebProcess> itsProcess)
    : view(std::move(webView)), process(std::move(itsProcess)) {
  process->add(view);
}

Engine& Engine::operator=(Engine&& other) noexcept {
  std::swap(view, other.view);
  std::swap(related, other.related);
  std::swap(process, other.process);
  std::swap(warm, other.warm);
  return *this;
}

// Left to itself a process leaves when it has nothing more to do; one whose page hangs in a loop never does, and other
// pages in it stand still with that: they are ended, too, and come back as after a crash.
Engine::~Engine() {
  if (view && (process.use_count() == 1 || !process->isResponsive()))
    webkit_web_view_terminate_web_process(view);
}

Engine freshEngine(WebSession& session) {
  auto process = std::make_shared<WebProcess>(session.hadPages());
  const auto context = session.context();
  return Engine(newWebView("web-context", context.get(), "network-session", session.network()),
                std::move(process));
}

// Where the process was not brought up yet, the engine does so for the second view in it.
Engine relatedEngine(const SharedView& other, const std::shared_ptr<WebProcess>& process) {
  GPtr<WebKitWebView> view;
  process->startIn([&] { view = newWebView("related-view", other.get()); });
  Engine made(std::move(view), process);
  made.related = other;
  made.warm = true;
  return made;
}

// A message brings the process up like a page would, and leaves nothing behind for the ad to wait for.
void Engine::startProcess() {
  process->startIn([this] {
    webkit_web_view_send_message_to_page(view, webkit_user_message_new(page::start, nullptr), nullptr,
                                         nullptr, nullptr);
  });
  warm = true;
}

PreparedEngine::PreparedEngine(std::shared_ptr<WebSession> session, guint secondsToLive)
    : session_(std::move(session)),
      idle_(g_idle_add_full(G_PRIORITY_LOW, idle, this, nullptr)),
      timer_(g_timeout_add_seconds(secondsToLive, timedOut, this)) {}

PreparedEngine::~PreparedEngine() {
  letGo();
}

gboolean PreparedEngine::idle(gpointer self) noexcept {
  auto& prepared = *static_cast<PreparedEngine*>(self);
  if (prepared.bringUpNext()) return G_SOURCE_CONTINUE;
  prepared.idle_ = 0;
  return G_SOURCE_REMOVE;
}

// Whether there is more to do now.
bool PreparedEngine::bringUpNext() {
  if (!session_->isStarted()) {
    session_->network();
  } else if (!context_) {
    context_ = session_->context();
  } else if (!engine_.view) {
    engine_ = freshEngine(*session_);
    g_signal_connect(engine_.view, "web-process-terminated", G_CALLBACK(terminated), this);
  } else if (auto& probe = EngineProbe::shared(); !probe.isOver()) {
    probed_ = probe.whenOver([this] { goOn(); });
    return false;
  } else {
    if (!probe.hindrance()) engine_.startProcess();
    return false;
  }
  return true;
}

void PreparedEngine::bringUp() {
  isAtOnce_ = true;
  if (!idle_) return;
  g_source_remove(std::exchange(idle_, 0));
  goOn();
}

void PreparedEngine::goOn() {
  if (!isAtOnce_) {
    idle_ = g_idle_add_full(G_PRIORITY_LOW, idle, this, nullptr);
    return;
  }
  while (bringUpNext()) {
  }
}

void PreparedEngine::letGo() {
  if (idle_) g_source_remove(std::exchange(idle_, 0));
  if (timer_) g_source_remove(std::exchange(timer_, 0));
  if (engine_.view) g_signal_handlers_disconnect_by_data(engine_.view, this);
  const Engine gone = std::move(engine_);
  probed_.cancel();
  context_.reset();
  session_.reset();
}

std::optional<Engine> PreparedEngine::take() {
  if (!engine_.view) return std::nullopt;
  g_signal_handlers_disconnect_by_data(engine_.view, this);
  Engine taken = std::move(engine_);
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
