// How a result that came on another thread reaches who asked for it, and who asked does not end there. Any thread.
#pragma once

#include "velto/platform/MainQueue.h"
#include "velto/platform/Platform.h"

#include <memory>
#include <utility>

namespace velto {

// Calls the completion with the values later on the main queue. Not when it is empty, and not after the
// platform went.
template <class Completion, class... Values>
void answerOnMain(Completion completion, Values... values) {
  auto* platform = Platform::currentOrNull();
  if (completion && platform)
    platform->mainQueue().post(
        [completion = std::move(completion), ... held = std::move(values)] { completion(held...); });
}

// Holds a value that ends on the main thread, wherever its last holder lets it go.
template <class Value>
std::shared_ptr<Value> endingOnMain(Value value) {
  return std::shared_ptr<Value>(new Value(std::move(value)), [](Value* held) {
    std::shared_ptr<Value> last(held);
    auto* platform = Platform::currentOrNull();
    if (platform && !platform->mainQueue().isCurrent())
      platform->mainQueue().post([last = std::move(last)] {});
  });
}

}  // namespace velto
