// Turns constraints into frames. Each axis of each view has two unknowns, its start and its length; every
// active constraint between the view and one of its ancestors (or a fixed length) is one linear equation in
// them. The first two equations that do not depend on each other decide; later ones that contradict them are
// passed over. What is left open is zero: a view has no size of its own.
#pragma once

#include "velto/platform/Geometry.h"

namespace velto {

class UIView;

// The frame, in its superview's coordinates, that the constraints give to a view laid out by constraints.
CGRect solvedFrame(const UIView& view);

}  // namespace velto
