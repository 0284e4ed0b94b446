// Requests go through as they are.
#include "preview/vast/Exchanges.h"

#include <velto/gtk/inspector/InspectorPage.h>

#include <utility>

namespace velto::preview {

std::list<std::shared_ptr<const Exchange>> ListeningSession::pending() const {
  const std::lock_guard lock(pending_->mutex);
  return pending_->all;
}

void ListeningSession::dataTask(NSURLRequest request, Completion completion) {
  const auto exchange =
      std::make_shared<const Exchange>(Exchange{.request = request, .begun = g_get_monotonic_time()});
  {
    const std::lock_guard lock(pending_->mutex);
    pending_->all.push_back(exchange);
  }
  session_.dataTask(std::move(request),
                    [exchange, completion = std::move(completion), heard = heard_, pending = pending_,
                     &queue = queue_](std::optional<std::string> data, auto response, auto error) {
                      // What is known of it is kept beside, since others may be reading that it is under way.
                      auto over = std::make_shared<Exchange>(*exchange);
                      over->ended = g_get_monotonic_time();
                      over->response = response;
                      over->error = error;
                      over->body = data.value_or("");
                      // The library first, so that its timeline is ahead of what is heard here.
                      completion(std::move(data), std::move(response), std::move(error));
                      queue.post([heard, pending, exchange, over] {
                        {
                          const std::lock_guard lock(pending->mutex);
                          pending->all.remove(exchange);
                        }
                        if (*heard) (*heard)(*over);
                      });
                    });
}

void ListeningApplication::openURL(const NSURL& url, const std::map<std::string, std::string>& options,
                                   std::function<void(bool opened)> completion) {
  Application::openURL(
      url, options,
      [heard = heard_, address = url.absoluteString(), completion = std::move(completion)](bool opened) {
        if (*heard) (*heard)(address, opened);
        if (completion) completion(opened);
      });
}

ListeningPlatform& ListeningPlatform::install(const gtk::Options& options) {
  auto platform = std::make_shared<ListeningPlatform>(options);
  auto& installed = *platform;
  gtk::uninstall();
  Platform::install(std::move(platform));
  gtk::registerInspectorPage();
  return installed;
}

}  // namespace velto::preview
