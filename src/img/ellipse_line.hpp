// A line along an ellipse, and how much it covers of a pixel.
#pragma once

#include "img/ellipse_edge.hpp"

namespace kestu {

class EllipseLine {
  public:
    // Half-axes along x and y, 0 or more.
    EllipseLine(double a, double b, double width) : ellipse_(a, b), half_width_(width / 2) {}

    // The part, 0 to 1, that is covered of the pixel around a point, the ellipse's middle being the
    // origin.
    double part_of_pixel(double x, double y) const;

  private:
    double part_of_cells(double x, double y) const;
    // Of a square cell, as many of which make a pixel's side, along the edge next to its centre.
    double part_of_cell(const Edge &edge, double cells) const;

    Ellipse ellipse_;
    double half_width_;
};

} // namespace kestu
