// A server for plain HTTP, or with a certificate for HTTPS, on a free port of this machine.
#pragma once

#include <httplib.h>

#include <future>
#include <memory>
#include <string>
#include <thread>

namespace velto::test {

class LoopbackServer {
 public:
  // Handlers run on the server's threads. They are set before start().
  LoopbackServer() : LoopbackServer(std::make_unique<httplib::Server>(), "http") {}
  LoopbackServer(const std::string& certificate, const std::string& key)
      : LoopbackServer(std::make_unique<httplib::SSLServer>(certificate.c_str(), key.c_str()), "https") {}
  LoopbackServer(const LoopbackServer&) = delete;
  LoopbackServer& operator=(const LoopbackServer&) = delete;
  ~LoopbackServer() {
    end_.set_value();
    server_->stop();
    if (thread_.joinable()) thread_.join();
  }
  httplib::Server* operator->() { return server_.get(); }
  void start() {
    port_ = server_->bind_to_any_port("127.0.0.1");
    thread_ = std::thread([this] { server_->listen_after_bind(); });
    while (!server_->is_running()) std::this_thread::yield();
  }
  std::string address(const std::string& path = "") const {
    return scheme_ + "://127.0.0.1:" + std::to_string(port_) + path;
  }
  // For a handler that gives no answer for as long as the server lives.
  void waitForEnd() const { ended_.wait(); }

 private:
  LoopbackServer(std::unique_ptr<httplib::Server> server, std::string scheme)
      : server_(std::move(server)), scheme_(std::move(scheme)) {
    server_->set_keep_alive_max_count(1);  // else its end waits for the other side's
  }

  std::unique_ptr<httplib::Server> server_;
  std::string scheme_;
  int port_ = 0;
  std::promise<void> end_;
  const std::shared_future<void> ended_ = end_.get_future().share();
  std::thread thread_;
};

}  // namespace velto::test
