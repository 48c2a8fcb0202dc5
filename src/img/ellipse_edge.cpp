// Distance from a point to an ellipse after D. Eberly: the nearest point is where the point itself
// is pulled along both axes, (a^2 x / (s + a^2 - b^2), b^2 y / s), by an s that solves one
// equation.
#include "img/ellipse_edge.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

namespace kestu {
namespace {

// The equation is G(s) = (a x / (s + a^2 - b^2))^2 + (b y / s)^2 - 1 = 0. G falls and is convex, so
// that Newton's method from a place where it is not negative climbs to the root and never passes
// it. Such a place is `lowest`, where one of the squares alone is 1. A better one is mostly found
// by a first step from b^2, which belongs to points on the ellipse. Near the long axis s is tiny
// beside b^2, which is why it is not counted from there: it would not change by its last steps.
double solve(double a, double b, double x, double y) {
    constexpr double precision = 1e-8; // the last step's square is what is left
    const double focal2 = (a - b) * (a + b);
    const double ax2 = a * x * a * x;
    const double by2 = b * y * b * y;
    const auto step_from = [=](double s) {
        const double p = 1 / (s + focal2);
        const double q = 1 / s;
        const double u2 = ax2 * p * p;
        const double v2 = by2 * q * q;
        return (u2 + v2 - 1) / (2 * (u2 * p + v2 * q));
    };
    const double lowest = std::max(a * x - focal2, b * y);
    double s = std::max(b * b + step_from(b * b), lowest);
    for (;;) {
        const double step = step_from(s);
        s += std::max(step, 0.0);
        if (step <= precision * s)
            return s;
    }
}

// The gradient of x^2 / a^2 + y^2 / b^2 at the nearest point, halved, for a >= b > 0.
struct Gradient {
    double x, y;
};

Gradient gradient_at_nearest(double a, double b, double x, double y) {
    const double focal2 = (a - b) * (a + b);
    if (x == 0)
        return {0, 1 / b};
    if (y == 0) {
        if (a * x >= focal2)
            return {1 / a, 0};
        const double cosine = a * x / focal2;
        return {cosine / a, std::sqrt(1 - cosine * cosine) / b};
    }
    const double s = solve(a, b, x, y);
    return {x / (s + focal2), y / s};
}

Edge edge_of_ellipse(double a, double b, double x, double y) {
    const double a2 = a * a;
    const double b2 = b * b;
    const Gradient g = gradient_at_nearest(a, b, x, y);
    const double length = std::sqrt(g.x * g.x + g.y * g.y);
    const double nx = g.x / length;
    const double ny = g.y / length;
    const double distance = (x - a2 * g.x) * nx + (y - b2 * g.y) * ny;
    return {distance, nx, ny, a2 * b2 * length * length * length};
}

// An ellipse without height is a line from -a to a.
Edge edge_of_line(double a, double x, double y) {
    constexpr double straight = std::numeric_limits<double>::infinity();
    const double beyond = std::max(x - a, 0.0);
    const double distance = std::sqrt(beyond * beyond + y * y);
    if (distance == 0)
        return {0, 0, 1, straight};
    return {distance, beyond / distance, y / distance, straight};
}

} // namespace

Edge Ellipse::nearest(double x, double y) const {
    if (a_ < b_) {
        const Edge edge = Ellipse(b_, a_).nearest(y, x);
        return {edge.distance, edge.ny, edge.nx, edge.radius};
    }
    return b_ == 0 ? edge_of_line(a_, x, y) : edge_of_ellipse(a_, b_, x, y);
}

} // namespace kestu
