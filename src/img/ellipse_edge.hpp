// The point of an ellipse that is next to a given point.
#pragma once

namespace kestu {

// How a point lies to the edge: at a distance, negative inside, along a normal of length 1 that
// points outwards. Where they meet, the edge bends as a circle of `radius` does.
struct Edge {
    double distance;
    double nx, ny;
    double radius;
};

// An axis-parallel ellipse around the origin.
class Ellipse {
  public:
    // Half-axes along x and y, 0 or more.
    Ellipse(double a, double b) : a_(a), b_(b) {}

    // The edge next to a point with coordinates of 0 or more.
    Edge nearest(double x, double y) const;

  private:
    double a_, b_;
};

} // namespace kestu
