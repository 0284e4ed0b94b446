// Tasks that wait for one outcome, each with its own way to be called off. Owned by the widget or object that they are
// asked of; main thread.
#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "velto-private.h"

namespace velto_glib {

class Waiting {
 public:
  // `cancelled` is called after a task of the caller's was called off.
  explicit Waiting(std::function<void()> cancelled) : cancelled_(std::move(cancelled)) {}
  Waiting(const Waiting&) = delete;
  Waiting& operator=(const Waiting&) = delete;
  ~Waiting();

  // Takes the task over.
  void add(GTask* task);
  bool isEmpty() const { return tasks_.empty(); }

  // All that wait now have their outcome when the function that is returned is called: what happens in
  // between begins to wait for the next one. No error is success.
  using Answer = std::function<void(const GError* error)>;
  Answer take();

 private:
  struct Entry {
    GTask* task;
    GSource* cancellation;  // null where there is none
  };
  static gboolean calledOff(GCancellable*, gpointer task) noexcept;
  static void end(const Entry& entry);

  std::function<void()> cancelled_;
  std::vector<Entry> tasks_;
};

}  // namespace velto_glib
