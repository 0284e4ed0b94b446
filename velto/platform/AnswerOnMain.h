// How a result that came on another thread reaches who asked for it. Any thread.
#pragma once

#include "velto/platform/MainQueue.h"
#include "velto/platform/Platform.h"

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

}  // namespace velto
