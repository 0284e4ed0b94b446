// A callback that is cheap to copy: copies share the callable. A std::function copies what it holds instead,
// and so all callbacks inside it in turn, which is slow, and endless for a chain of ten thousand. Any thread.
#pragma once

#include <functional>
#include <memory>
#include <type_traits>
#include <utility>

namespace velto {

template <class... Arguments>
class SharedCallback {
 public:
  SharedCallback() = default;
  SharedCallback(std::nullptr_t) {}
  template <class Callable>
  requires(std::is_invocable_v<const Callable&, Arguments...> && !std::is_same_v<Callable, SharedCallback>)
      SharedCallback(Callable callable)
      : callable_(std::make_shared<const std::function<void(Arguments...)>>(std::move(callable))) {}

  explicit operator bool() const { return callable_ && *callable_; }
  void operator()(Arguments... arguments) const { (*callable_)(std::move(arguments)...); }

 private:
  std::shared_ptr<const std::function<void(Arguments...)>> callable_;
};

}  // namespace velto
