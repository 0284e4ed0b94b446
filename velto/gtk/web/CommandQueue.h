// Commands of a page on their way to the library, in the order in which they came. A page may send thousands
// in a second: they are told at once while that costs little, and otherwise wait for times at which no frame
// is late for them. Owned by the web view's peer; main thread only.
#pragma once

#include "velto/platform/ui/WKWebView.h"

#include <glib.h>

#include <deque>
#include <functional>
#include <memory>

namespace velto::gtk {

class CommandQueue : public std::enable_shared_from_this<CommandQueue> {
 public:
  struct Command {
    WKNavigationAction action;
    bool mayOpen = false;  // whether a person had touched the page when it sent this
  };

  // `tell` may end the page, and with it the owner of this.
  explicit CommandQueue(std::function<void(const Command&)> tell) : tell_(std::move(tell)) {}
  CommandQueue(const CommandQueue&) = delete;
  CommandQueue& operator=(const CommandQueue&) = delete;
  ~CommandQueue() { close(); }

  void add(Command command);
  // Whatever still waits came from a page that is no more.
  void clear() { waiting_.clear(); }
  void close();

 private:
  static gboolean continueTelling(gpointer queue) noexcept;
  void tellWhatTimeAllows();
  bool hasTime();
  void wait();

  std::function<void(const Command&)> tell_;
  std::deque<Command> waiting_;
  gint64 periodBegan_ = 0;  // microseconds
  gint64 spent_ = 0;        // in this period
  bool telling_ = false;
  guint source_ = 0;
};

}  // namespace velto::gtk
