// Animations of a view's frame and alpha. The view takes its final values at once; what
// is shown follows the curve, a step for each frame of the display, and ends at those
// values or at what they have become by then. Main thread only; the completion comes
// later on it, also (with false) when another animation took over or the view went.
#pragma once

#include "velto/platform/ui/UIView.h"

#include <functional>
#include <memory>
#include <optional>

namespace velto {

struct ViewChange {
  std::optional<CGRect> frame;
  std::optional<double> alpha;
};

// Eases in and out (a cubic curve). Times in seconds.
void animateWithDuration(double duration, double delay, const std::shared_ptr<UIView>& view,
                         const ViewChange& change, std::function<void(bool finished)> completion);

// A damped harmonic oscillator that has settled to a thousandth by the end. `damping` is the damping ratio (0
// … 1), `initialVelocity` counts whole distances a second.
void animateWithDuration(double duration, double delay, double usingSpringWithDamping,
                         double initialSpringVelocity, const std::shared_ptr<UIView>& view,
                         const ViewChange& change, std::function<void(bool finished)> completion);

// The curves, from 0 at time 0 to 1 at `duration` and after.
double easeInOut(double time, double duration);
double springPosition(double time, double duration, double damping, double initialVelocity);

}  // namespace velto
