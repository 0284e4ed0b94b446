// The chain along which a view finds the controller that it belongs to.
#pragma once

#include "velto/Export.h"

#include <memory>

namespace velto {

class UIViewController;

class VELTO_EXPORT UIResponder {
 public:
  virtual ~UIResponder() = default;

  // A view's controller if it is a controller's own view, else
  // its superview; a controller's is its view's superview.
  virtual UIResponder* nextResponder() const = 0;

  // The first view controller met on walking upward, this responder not counted; null when there is none.
  UIViewController* nextViewControllerResponder() const;
};

}  // namespace velto
