// The walk up the responder chain.
#include "velto/platform/ui/UIResponder.h"

#include "velto/platform/ui/UIViewController.h"

namespace velto {

UIViewController* UIResponder::nextViewControllerResponder() const {
  for (auto* responder = nextResponder(); responder; responder = responder->nextResponder())
    if (auto* controller = dynamic_cast<UIViewController*>(responder)) return controller;
  return nullptr;
}

}  // namespace velto
