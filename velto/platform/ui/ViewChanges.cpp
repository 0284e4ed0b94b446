// The list of observers.
#include "velto/platform/ui/ViewChanges.h"

#include <algorithm>
#include <memory>
#include <vector>

namespace velto {
namespace {

using Observer = std::shared_ptr<std::function<void()>>;

std::vector<Observer>& observers() {
  static auto& list = *new std::vector<Observer>;  // views may be the last to go
  return list;
}

}  // namespace

bool ViewChanges::observed_ = false;
int ViewChanges::held_ = 0;
bool ViewChanges::untold_ = false;

Handle ViewChanges::observe(std::function<void()> observer) {
  observers().push_back(std::make_shared<std::function<void()>>(std::move(observer)));
  observed_ = true;
  return Handle([added = observers().back().get()] {
    auto& list = observers();
    std::erase_if(list, [&](const auto& known) { return known.get() == added; });
    observed_ = !list.empty();
  });
}

void ViewChanges::tell() {
  const auto list = observers();
  for (const auto& observer : list)
    if (observer.use_count() > 1) (*observer)();  // else it went meanwhile
}

}  // namespace velto
