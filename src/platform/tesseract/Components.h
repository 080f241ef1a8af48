#pragma once

#include "Plane.h"

#include <vector>

namespace pelloran {

// Groups of pixels that touch, also at their corners.
struct Components {
    std::vector<int> numbers; // of the group of each pixel of the mask, from 1; 0 where the mask is 0
    int count = 0;
};

Components componentsOf(const Plane& mask);

} // namespace pelloran
