// A callback that is cheap to copy: copies share the callable. A std::function copies what it holds instead,
// and so all callbacks inside it in turn, which is slow, and endless for a chain of ten thousand. Nor does a
// long chain go down the stack when it is let go. Any thread.
#pragma once

#include <functional>
#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

namespace velto {

template <class... Arguments>
class SharedCallback {
 public:
  SharedCallback() = default;
  SharedCallback(std::nullptr_t) {}
  template <class Callable, class = std::enable_if_t<std::is_invocable_v<const Callable&, Arguments...> &&
                                                     !std::is_same_v<Callable, SharedCallback>>>
  SharedCallback(Callable callable) : callable_(new Function(std::move(callable)), letGo) {}

  explicit operator bool() const { return callable_ && *callable_; }
  void operator()(Arguments... arguments) const { (*callable_)(std::move(arguments)...); }

 private:
  using Function = std::function<void(Arguments...)>;

  // One callable often holds the next: those that are let go meanwhile wait until this one is gone. Nothing of a thread
  // is left to them but a pointer: callables go after all that the main thread had, too, when the process ends.
  static void letGo(const Function* callable) {
    static thread_local std::vector<const Function*>* waiting = nullptr;
    if (waiting) return waiting->push_back(callable);
    std::vector<const Function*> next{callable};
    waiting = &next;
    while (!next.empty()) {
      const std::unique_ptr<const Function> last(next.back());
      next.pop_back();
    }
    waiting = nullptr;
  }

  std::shared_ptr<const Function> callable_;
};

}  // namespace velto
