// Counting answers, and waiting for more.
#include "velto/gtk/web/PageCost.h"

#include "velto/platform/MainQueue.h"
#include "velto/platform/Platform.h"

#include <string_view>

namespace velto::gtk {

// One that is on its way. It may come when the page is gone.
struct PageCost::Answer {
  std::weak_ptr<Traffic> traffic;
  bool isWhole = true;
};

struct PageCost::Wait {
  std::function<void()> then;
  Handle alarm;
};

PageCost::PageCost(WebKitWebView* view) : view_(view) {
  loadBegins();
  g_signal_connect(view, "resource-load-started", G_CALLBACK(started), this);
}

PageCost::~PageCost() {
  g_signal_handlers_disconnect_by_data(view_, this);
}

void PageCost::loadBegins() {
  traffic_ = std::make_shared<Traffic>();
  traffic_->came = [this] { tell(); };
}

void PageCost::started(WebKitWebView*, WebKitWebResource* resource, WebKitURIRequest* request,
                       PageCost* self) noexcept {
  const char* address = webkit_web_resource_get_uri(resource);
  if (!address || !std::string_view(address).starts_with("http"))
    return;  // its own markup, and what scripts made
  if (g_strcmp0(webkit_uri_request_get_http_method(request), "HEAD") == 0)
    return;  // the length that is told never comes
  auto* answer = new Answer{self->traffic_};
  const auto free = [](gpointer data, GClosure*) { delete static_cast<Answer*>(data); };
  g_signal_connect(resource, "failed", G_CALLBACK(failed), answer);
  g_signal_connect_data(resource, "finished", G_CALLBACK(finished), answer, free, GConnectFlags(0));
}

void PageCost::failed(WebKitWebResource*, GError*, Answer* answer) noexcept {
  answer->isWhole = false;
}

void PageCost::finished(WebKitWebResource* resource, Answer* answer) noexcept {
  const auto traffic = answer->traffic.lock();
  auto* response = webkit_web_resource_get_response(resource);
  if (!traffic || !response || !answer->isWhole) return;
  const auto length = webkit_uri_response_get_content_length(response);
  if (length == 0 || length == G_MAXUINT64) return;
  traffic->bytes += length;
  traffic->came();
}

WebPageUse PageCost::use(const std::shared_ptr<WebProcess>& process) const {
  WebPageUse use;
  if (process->pid() != 0 && !process->hasEnded()) {
    use = process->useWatch().use(process->pid());
    use.process = process->number();
    use.pages = static_cast<int>(process.use_count());
  }
  use.networkBytes = traffic_->bytes;
  return use;
}

Handle PageCost::afterUse(WebProcess& process, double processorSeconds, std::function<void()> then) {
  auto wait = std::make_shared<Wait>();
  wait->then = std::move(then);
  if (process.pid() != 0 && !process.hasEnded())  // another may have its number by now
    wait->alarm = process.useWatch().after(process.pid(), processorSeconds, [weak = std::weak_ptr(wait)] {
      const auto alive = weak.lock();
      if (alive && alive->then) std::exchange(alive->then, nullptr)();
    });
  wait_ = wait;
  return Handle([wait]() mutable { wait.reset(); });
}

bool PageCost::tell() {
  const auto wait = wait_.lock();
  auto* platform = Platform::currentOrNull();
  if (!wait || !wait->then || !platform) return false;
  platform->mainQueue().post([weak = std::weak_ptr(wait)] {
    const auto alive = weak.lock();
    if (alive && alive->then) std::exchange(alive->then, nullptr)();
  });
  return true;
}

}  // namespace velto::gtk
