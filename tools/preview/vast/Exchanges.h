// The platform of a video ad's preview: that of any application, whose requests are listened to. Main thread, unless it says
// otherwise.
#pragma once

#include <velto/gtk/GtkPlatform.h>
#include <velto/platform/NSURLSession.h>

#include <filesystem>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace velto::preview {

// One request, and what came of it.
struct Exchange {
  NSURLRequest request;
  gint64 begun = 0;  // of the monotonic clock, microseconds
  gint64 ended = 0;  // 0: it is under way
  std::shared_ptr<const NSURLResponse> response = nullptr;
  std::optional<NSError> error = std::nullopt;
  std::string body = {};
};

// Hands on, and tells what came of each.
class ListeningSession final : public NSURLSession {
 public:
  ListeningSession(NSURLSession& session, MainQueue& queue) : session_(session), queue_(queue) {}

  // Called for each that has ended, in a later turn.
  void observe(std::function<void(const Exchange&)> heard) { *heard_ = std::move(heard); }
  // Those that are under way, or not yet told.
  std::list<std::shared_ptr<const Exchange>> pending() const;

  void dataTask(NSURLRequest request, Completion completion) override;
  Handle connectAhead(const NSURL& url) override { return session_.connectAhead(url); }

 private:
  struct Pending {
    std::mutex mutex;
    std::list<std::shared_ptr<const Exchange>> all;
  };
  NSURLSession& session_;
  MainQueue& queue_;
  std::shared_ptr<std::function<void(const Exchange&)>> heard_ =
      std::make_shared<std::function<void(const Exchange&)>>();
  std::shared_ptr<Pending> pending_ = std::make_shared<Pending>();
};

// Tells what is opened outside of the application.
class ListeningApplication final : public gtk::Application {
 public:
  using gtk::Application::Application;
  void observe(std::function<void(const std::string& url, bool opened)> heard) { *heard_ = std::move(heard); }
  void openURL(const NSURL& url, const std::map<std::string, std::string>& options,
               std::function<void(bool opened)> completion) override;

 private:
  using Heard = std::function<void(const std::string& url, bool opened)>;
  std::shared_ptr<Heard> heard_ = std::make_shared<Heard>();
};

class ListeningPlatform final : public gtk::GtkPlatform {
 public:
  // Installs it; gtk::uninstall() ends it.
  static ListeningPlatform& install(const gtk::Options& options);

  explicit ListeningPlatform(const gtk::Options& options)
      : GtkPlatform(options),
        caFile_(options.caFile),
        session_(GtkPlatform::urlSession(), mainQueue()),
        application_(mainQueue(), options.opensOnlyAfterTouch, options.leastTimeUnderTouch, nullptr) {}
  ListeningSession& urlSession() override { return session_; }
  ListeningApplication& application() override { return application_; }
  // Of the certificate authorities that it trusts instead of the system's; empty: the system's.
  const std::filesystem::path& caFile() const { return caFile_; }

 private:
  const std::filesystem::path caFile_;
  ListeningSession session_;
  ListeningApplication application_;
};

}  // namespace velto::preview
