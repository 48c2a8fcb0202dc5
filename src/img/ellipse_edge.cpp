// Distance from a point to an ellipse after D. Eberly: the nearest point is where the point itself
// is pulled along both axes, (a^2 x / (t + a^2), b^2 y / (t + b^2)), by a t that solves one
// equation.
#include "img/ellipse_edge.hpp"

#include <algorithm>
#include <cmath>

namespace kestu {
namespace {

// The equation is G(t) = (a x / (t + a^2))^2 + (b y / (t + b^2))^2 - 1 = 0. G falls and is convex,
// so that Newton's method from a place where it is not negative climbs to the root and never passes
// it. Such a place is `lowest`, where one of the squares alone is 1. A better one is mostly found
// by a first step from 0, which belongs to points on the ellipse.
double solve(double a, double b, double x, double y) {
    constexpr double precision = 1e-8; // the last step's square is what is left
    const double a2 = a * a;
    const double b2 = b * b;
    const auto step_from = [=](double t) {
        const double p = 1 / (t + a2);
        const double q = 1 / (t + b2);
        const double u2 = a2 * x * x * p * p;
        const double v2 = b2 * y * y * q * q;
        return (u2 + v2 - 1) / (2 * (u2 * p + v2 * q));
    };
    const double lowest = std::max(a * x - a2, b * y - b2);
    double t = std::max(step_from(0), lowest);
    for (;;) {
        const double step = step_from(t);
        t += std::max(step, 0.0);
        if (step <= precision * (t + b2))
            return t;
    }
}

struct Point {
    double x, y;
};

// The nearest point for a >= b > 0.
Point nearest_point(double a, double b, double x, double y) {
    const double focal2 = a * a - b * b;
    if (x == 0)
        return {0, b};
    if (y == 0) {
        if (a * x >= focal2)
            return {a, 0};
        const double cosine = a * x / focal2;
        return {a * cosine, b * std::sqrt(1 - cosine * cosine)};
    }
    const double t = solve(a, b, x, y);
    return {a * a * x / (t + a * a), b * b * y / (t + b * b)};
}

// An ellipse without height is a line from -a to a.
Edge edge_of_line(double a, double x, double y) {
    const double beyond = std::max(x - a, 0.0);
    const double distance = std::sqrt(beyond * beyond + y * y);
    return distance > 0 ? Edge{distance, beyond / distance, y / distance} : Edge{0, 0, 1};
}

Edge edge_of_ellipse(double a, double b, double x, double y) {
    const Point q = nearest_point(a, b, x, y);
    const double gx = q.x / (a * a);
    const double gy = q.y / (b * b);
    const double length = std::sqrt(gx * gx + gy * gy);
    const double nx = gx / length;
    const double ny = gy / length;
    return {(x - q.x) * nx + (y - q.y) * ny, nx, ny};
}

} // namespace

Edge Ellipse::nearest(double x, double y) const {
    if (a_ < b_) {
        const Edge edge = Ellipse(b_, a_).nearest(y, x);
        return {edge.distance, edge.ny, edge.nx};
    }
    return b_ == 0 ? edge_of_line(a_, x, y) : edge_of_ellipse(a_, b_, x, y);
}

} // namespace kestu
