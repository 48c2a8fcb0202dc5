// How much of a pixel a line covers: unweighted area sampling after E. Catmull.
#pragma once

#include "img/ellipse_edge.hpp"

#include <algorithm>
#include <cmath>

namespace kestu {

// The part of a pixel on one side of a line with a normal of length 1 whose distance from the
// pixel's centre is `distance`, positive when the centre lies on that side.
inline double part_before_line(double distance, double nx, double ny) {
    if (distance < 0)
        return 1 - part_before_line(-distance, nx, ny);
    const double major = std::max(std::fabs(nx), std::fabs(ny));
    const double minor = std::min(std::fabs(nx), std::fabs(ny));
    const double corner = (major + minor) / 2; // the farthest corner's distance from the centre
    if (distance >= corner)
        return 1;
    if (distance <= (major - minor) / 2)
        return 0.5 + distance / major;
    const double rest = corner - distance;
    return 1 - rest * rest / (2 * major * minor);
}

// The part of a pixel that lies within `half_width` on both sides of the edge next to its centre.
inline double covered_part(const Edge &edge, double half_width) {
    return part_before_line(half_width - edge.distance, edge.nx, edge.ny) -
           part_before_line(-half_width - edge.distance, edge.nx, edge.ny);
}

} // namespace kestu
