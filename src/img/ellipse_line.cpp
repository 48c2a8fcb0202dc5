// Unweighted area sampling after E. Catmull, with straight lines in place of the curve.
#include "img/ellipse_line.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace kestu {
namespace {

// Cells on a pixel's side: an even number, so that none lies on both sides of an axis.
constexpr int cells_on_side = 4;

// Edges count as straight within a pixel when the ellipse has at least the first radius there, and
// the edge itself at least the second. By the first, both edges of a thin line are treated alike:
// the area that straight lines add outside is what they take away inside.
constexpr double straight_ellipse = 8;
constexpr double straight_edge = 4;

constexpr double half_diagonal = std::numbers::sqrt2 / 2;

// The part of a square of side 1 on one side of a line with a normal of length 1 whose distance
// from the square's centre is `distance`, positive when the centre lies on that side.
double part_before_line(double distance, double nx, double ny) {
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

// Whether straight edges in one direction serve for a whole pixel. Inside the ellipse a pixel on an
// axis is met by the line from both sides.
bool is_straight(const Edge &edge, double x, double y) {
    const bool met_from_both_sides = edge.distance < 0 && (x == 0 || y == 0);
    return edge.radius >= straight_ellipse && edge.radius + edge.distance >= straight_edge &&
           !met_from_both_sides;
}

} // namespace

double EllipseLine::part_of_cell(const Edge &edge, double cells) const {
    return part_before_line((half_width_ - edge.distance) * cells, edge.nx, edge.ny) -
           part_before_line((-half_width_ - edge.distance) * cells, edge.nx, edge.ny);
}

double EllipseLine::part_of_cells(double x, double y) const {
    constexpr double cells = cells_on_side;
    double sum = 0;
    for (int i = 0; i < cells_on_side; ++i)
        for (int j = 0; j < cells_on_side; ++j) {
            const double cell_x = std::fabs(x + (i + 0.5) / cells - 0.5);
            const double cell_y = std::fabs(y + (j + 0.5) / cells - 0.5);
            sum += part_of_cell(ellipse_.nearest(cell_x, cell_y), cells);
        }
    return sum / (cells * cells);
}

double EllipseLine::part_of_pixel(double x, double y) const {
    const Edge edge = ellipse_.nearest(std::fabs(x), std::fabs(y));
    const double from_line = std::fabs(edge.distance) - half_width_;
    if (std::fabs(from_line) >= half_diagonal)
        return from_line < 0 ? 1 : 0;
    return is_straight(edge, x, y) ? part_of_cell(edge, 1) : part_of_cells(x, y);
}

} // namespace kestu
