// Shapes: the plain walks pixel for pixel, and what the smooth outlines look like.
#include "kestu_img_shape.h"

#include "support/chain.hpp"

#include <climits>
#include <cmath>
#include <functional>
#include <limits>
#include <map>
#include <numbers>
#include <set>

using namespace kestu::test;
using testing::ElementsAre;

namespace {

using Point = std::pair<int, int>;

struct Canvas {
    std::vector<Point> plotted;
    std::map<Point, double> coverage; // added up
    double lowest = 1;
    double highest = 0;
    size_t fails_at = 0; // the call that fails, if any

    static kestu_error_t *plot(int x, int y, void *data, double intensity) {
        auto &canvas = *static_cast<Canvas *>(data);
        canvas.plotted.emplace_back(x, y);
        canvas.coverage[{x, y}] += intensity;
        canvas.lowest = std::min(canvas.lowest, intensity);
        canvas.highest = std::max(canvas.highest, intensity);
        return canvas.plotted.size() == canvas.fails_at ? kestu_error_create(0, 7, nullptr, "full")
                                                        : nullptr;
    }
    double area() const {
        double sum = 0;
        for (const auto &[point, part] : coverage)
            sum += part;
        return sum;
    }
    double at(int x, int y) const {
        const auto found = coverage.find({x, y});
        return found == coverage.end() ? 0 : found->second;
    }
};

using Draw = std::function<kestu_error_t *(kestu_img_plot_func, void *)>;

Canvas drawn(const Draw &draw) {
    Canvas canvas;
    EXPECT_OK(draw(Canvas::plot, &canvas));
    return canvas;
}

Draw circle(int x, int y, int r) {
    return [=](auto plot, void *data) { return kestu_img_circle(x, y, r, plot, data); };
}
Draw ellipse(int x, int y, int a, int b) {
    return [=](auto plot, void *data) { return kestu_img_ellipse(x, y, a, b, plot, data); };
}
Draw ellipser(int x0, int y0, int x1, int y1) {
    return [=](auto plot, void *data) { return kestu_img_ellipser(x0, y0, x1, y1, plot, data); };
}
Draw circle_aa(int x, int y, int r) {
    return [=](auto plot, void *data) { return kestu_img_circle_aa(x, y, r, plot, data); };
}
Draw ellipse_aa(int x, int y, int a, int b) {
    return [=](auto plot, void *data) { return kestu_img_ellipse_aa(x, y, a, b, plot, data); };
}
Draw ellipser_aa(int x0, int y0, int x1, int y1) {
    return [=](auto plot, void *data) { return kestu_img_ellipser_aa(x0, y0, x1, y1, plot, data); };
}
Draw circle_waa(double x, double y, double r, double width) {
    return [=](auto plot, void *data) { return kestu_img_circle_waa(x, y, r, width, plot, data); };
}
Draw ellipse_waa(double x, double y, double a, double b, double width) {
    return
        [=](auto plot, void *data) { return kestu_img_ellipse_waa(x, y, a, b, width, plot, data); };
}
Draw ellipser_waa(double x0, double y0, double x1, double y1, double width) {
    return [=](auto plot, void *data) {
        return kestu_img_ellipser_waa(x0, y0, x1, y1, width, plot, data);
    };
}

std::set<Point> distinct(const Canvas &canvas) {
    return {canvas.plotted.begin(), canvas.plotted.end()};
}

// An ellipse around the origin by many of its points.
class Curve {
  public:
    Curve(double a, double b) {
        constexpr int count = 5000;
        for (int i = 0; i < count; ++i) {
            const double angle = i * 2 * std::numbers::pi / count;
            points_.emplace_back(a * std::cos(angle), b * std::sin(angle));
        }
    }
    double distance(double x, double y) const {
        double least = std::numeric_limits<double>::infinity();
        for (const auto &[px, py] : points_)
            least = std::min(least, (x - px) * (x - px) + (y - py) * (y - py));
        return std::sqrt(least);
    }

  private:
    std::vector<std::pair<double, double>> points_;
};

// Whether steps along the axes lead from a pixel to far away without meeting one of `wall`.
bool leads_outside(const std::set<Point> &wall, Point from) {
    std::set<Point> seen = {from};
    for (std::vector<Point> ahead = {from}; !ahead.empty();) {
        const auto [x, y] = ahead.back();
        ahead.pop_back();
        if (std::max(std::abs(x), std::abs(y)) > 100)
            return true;
        for (const Point &next : {Point{x + 1, y}, {x - 1, y}, {x, y + 1}, {x, y - 1}})
            if (!wall.contains(next) && seen.insert(next).second)
                ahead.push_back(next);
    }
    return false;
}

// Ramanujan's second approximation.
double circumference(double a, double b) {
    const double h = (a - b) * (a - b) / ((a + b) * (a + b));
    return std::numbers::pi * (a + b) * (1 + 3 * h / (10 + std::sqrt(4 - 3 * h)));
}

void expect_symmetry(const Canvas &canvas) {
    for (const auto &[point, part] : canvas.coverage) {
        const auto [x, y] = point;
        for (const Point &mirrored : {Point{-x, y}, {x, -y}})
            EXPECT_DOUBLE_EQ(canvas.at(mirrored.first, mirrored.second), part) << x << ", " << y;
    }
}

// Each pixel once, covered by something and never by more than all of it.
void expect_proper_coverage(const Canvas &canvas) {
    EXPECT_EQ(canvas.plotted.size(), canvas.coverage.size());
    EXPECT_GT(canvas.lowest, 0);
    EXPECT_LE(canvas.highest, 1);
}

} // namespace

TEST(Shapes, SmallCircles) {
    EXPECT_THAT(drawn(circle(5, 6, 0)).plotted,
                ElementsAre(Point(5, 6), Point(5, 6), Point(5, 6), Point(5, 6)));
    EXPECT_THAT(drawn(circle(0, 0, 1)).plotted,
                ElementsAre(Point(1, 0), Point(0, 1), Point(-1, 0), Point(0, -1)));
    EXPECT_THAT(drawn(circle(10, 20, 2)).plotted,
                ElementsAre(Point(12, 20), Point(10, 22), Point(8, 20), Point(10, 18),
                            Point(12, 21), Point(9, 22), Point(8, 19), Point(11, 18), Point(11, 22),
                            Point(8, 21), Point(9, 18), Point(12, 19)));
    EXPECT_EQ(drawn(circle(0, 0, -5)).plotted.size(), 4u);
}

TEST(Shapes, SmallEllipses) {
    EXPECT_THAT(drawn(ellipse(0, 0, 2, 1)).plotted,
                ElementsAre(Point(2, 0), Point(-2, 0), Point(-2, 0), Point(2, 0), Point(1, 1),
                            Point(-1, 1), Point(-1, -1), Point(1, -1), Point(0, 1), Point(0, 1),
                            Point(0, -1), Point(0, -1)));
    EXPECT_THAT(drawn(ellipse(3, 4, 0, 2)).plotted,
                ElementsAre(Point(3, 4), Point(3, 4), Point(3, 4), Point(3, 4), Point(3, 5),
                            Point(3, 3), Point(3, 6), Point(3, 2)));
    EXPECT_EQ(distinct(drawn(ellipse(0, 0, 3, 0))),
              (std::set<Point>{{-3, 0}, {-2, 0}, {-1, 0}, {0, 0}, {1, 0}, {2, 0}, {3, 0}}));
    EXPECT_THAT(drawn(ellipse(7, 7, 0, 0)).plotted, testing::Each(Point(7, 7)));
}

TEST(Shapes, RectanglesAreTakenFromAnyCorner) {
    const Canvas expected = drawn(ellipser(0, 0, 4, 2));
    EXPECT_EQ(distinct(expected),
              (std::set<Point>{{0, 1}, {1, 0}, {2, 0}, {3, 0}, {4, 1}, {1, 2}, {2, 2}, {3, 2}}));
    for (const auto &draw : {ellipser(4, 2, 0, 0), ellipser(0, 2, 4, 0), ellipser(4, 0, 0, 2)})
        EXPECT_EQ(drawn(draw).plotted, expected.plotted);
    EXPECT_THAT(drawn(ellipser(0, 5, 3, 5)).plotted,
                ElementsAre(Point(3, 5), Point(0, 5), Point(0, 5), Point(3, 5), Point(2, 5),
                            Point(1, 5), Point(1, 5), Point(2, 5), Point(1, 5), Point(2, 5),
                            Point(1, 5), Point(2, 5)));
    EXPECT_THAT(drawn(ellipser(2, 2, 2, 2)).plotted, testing::Each(Point(2, 2)));
}

// All pixels lie next to the curve, the extremes are reached and no neighbour is missing.
TEST(Shapes, PlainCurvesAreThinAndClosed) {
    const struct {
        Draw draw;
        double a, b, x, y;
    } cases[] = {{circle(0, 0, 37), 37, 37, 0, 0},
                 {ellipse(0, 0, 40, 9), 40, 9, 0, 0},
                 {ellipse(0, 0, 3, 50), 3, 50, 0, 0},
                 {ellipser(0, 0, 41, 16), 20.5, 8, 20.5, 8},
                 {ellipser(0, 0, 3, 60), 1.5, 30, 1.5, 30}};
    for (const auto &c : cases) {
        const Curve curve(c.a, c.b);
        const std::set<Point> pixels = distinct(drawn(c.draw));
        double extreme_x = 0;
        double extreme_y = 0;
        for (const auto &[x, y] : pixels) {
            EXPECT_LE(curve.distance(x - c.x, y - c.y), 0.75) << x << ", " << y;
            extreme_x = std::max(extreme_x, std::fabs(x - c.x));
            extreme_y = std::max(extreme_y, std::fabs(y - c.y));
        }
        EXPECT_FALSE(leads_outside(pixels, {static_cast<int>(c.x), static_cast<int>(c.y)}));
        EXPECT_EQ(extreme_x, c.a);
        EXPECT_EQ(extreme_y, c.b);
    }
}

TEST(Shapes, TheFirstErrorOfTheCallbackEndsEveryShape) {
    for (const auto &draw :
         {circle(0, 0, 9), ellipse(0, 0, 9, 4), ellipse(0, 0, 0, 9), ellipser(0, 0, 9, 4),
          ellipser(0, 0, 9, 0), circle_aa(0, 0, 9), ellipse_aa(0, 0, 9, 4), ellipser_aa(0, 0, 9, 4),
          circle_waa(0, 0, 9, 3), ellipse_waa(0, 0, 9, 4, 3), ellipser_waa(0, 0, 9, 4, 3)}) {
        const size_t all = drawn(draw).plotted.size();
        for (size_t call = 1; call <= all; ++call) {
            Canvas canvas;
            canvas.fails_at = call;
            EXPECT_CHAIN(draw(Canvas::plot, &canvas), Element(7, "full"));
            EXPECT_EQ(canvas.plotted.size(), call);
        }
    }
}

TEST(Shapes, NothingOverflowsAtTheEndsOfInt) {
    for (const auto &draw : {circle(INT_MAX, INT_MIN, 5), ellipse(INT_MIN, INT_MAX, 5, 3),
                             circle_aa(INT_MAX, INT_MAX, 5), ellipse_aa(INT_MIN, INT_MIN, 5, 3),
                             circle_waa(INT_MAX, INT_MAX, 5, 3)}) {
        const Canvas canvas = drawn(draw);
        EXPECT_GT(canvas.plotted.size(), 3u);
        for (const auto &[x, y] : canvas.plotted) {
            EXPECT_TRUE(x < INT_MIN + 9 || x > INT_MAX - 9) << x;
            EXPECT_TRUE(y < INT_MIN + 9 || y > INT_MAX - 9) << y;
        }
    }
    const double inf = std::numeric_limits<double>::infinity();
    for (const auto &draw :
         {circle(0, 0, INT_MAX), circle(0, 0, INT_MIN), ellipse(0, 0, INT_MAX, INT_MAX),
          ellipse(0, 0, INT_MIN, INT_MIN), ellipser(INT_MIN, INT_MIN, INT_MAX, INT_MAX),
          circle_aa(0, 0, INT_MAX), circle_aa(0, 0, INT_MIN),
          ellipser_aa(INT_MAX, INT_MAX, INT_MIN, INT_MIN), ellipse_aa(0, 0, INT_MIN, INT_MAX),
          ellipser_waa(-inf, -1e300, inf, 1e300, inf), circle_waa(0, 0, 5, 1e300)}) {
        Canvas canvas;
        canvas.fails_at = 300;
        kestu_error_clear(draw(Canvas::plot, &canvas));
        EXPECT_LE(canvas.plotted.size(), 300u);
    }
}

// The pixels of the plain circle and their neighbours, covered as by the ellipse of the same size,
// of which only the least parts are missing. The ends of the axes are plotted twice.
TEST(SmoothCircle, WalksAsThePlainOneAndCoversAsTheEllipse) {
    EXPECT_THAT(drawn(circle_aa(4, 5, 0)).plotted,
                ElementsAre(Point(4, 5), Point(4, 5), Point(4, 5), Point(4, 5)));
    for (const int r : {1, 2, 3, 5, 6, 7, 10, 11, 16, 17, 59, 173, 500}) {
        const Canvas canvas = drawn(circle_aa(0, 0, r));
        const Canvas ellipse = drawn(ellipse_aa(0, 0, r, r));
        EXPECT_EQ(canvas.plotted.size(), canvas.coverage.size() + 4);
        EXPECT_GE(canvas.lowest, 0);
        expect_symmetry(canvas);
        for (const auto &[point, part] : canvas.coverage)
            EXPECT_NEAR(part, ellipse.at(point.first, point.second), 1e-9) << r;
        for (const auto &[point, part] : ellipse.coverage) {
            EXPECT_TRUE(part < 0.1 || canvas.coverage.contains(point)) << r;
        }
        for (const Point &point : distinct(drawn(circle(0, 0, r))))
            EXPECT_TRUE(canvas.coverage.contains(point)) << r;
        EXPECT_TRUE(r < 5 || std::fabs(canvas.area() / (2 * std::numbers::pi * r) - 1) < 0.01) << r;
    }
}

TEST(Outline, CoverageAddsUpToTheAreaOfTheLine) {
    for (const double width : {1.0, 1.3, 2.0, 3.5, 7.0})
        for (const int r : {5, 6, 7, 11, 50, 173, 500}) {
            const Canvas canvas = drawn(circle_waa(0, 0, r, width));
            expect_proper_coverage(canvas);
            EXPECT_NEAR(canvas.area() / (2 * std::numbers::pi * r * width), 1, 0.003)
                << r << ", " << width;
        }
    for (const auto &[a, b] : {std::pair{20, 10}, {10, 20}, {9, 8}, {150, 40}, {40, 150}})
        for (const double width : {1.0, 2.5, 4.0}) {
            const Canvas canvas = drawn(ellipse_waa(0, 0, a, b, width));
            expect_proper_coverage(canvas);
            expect_symmetry(canvas);
            EXPECT_NEAR(canvas.area() / (circumference(a, b) * width), 1, 0.003)
                << a << ", " << b << ", " << width;
        }
}

// No holes and nothing too much: what lies within the line is full, what lies outside is untouched.
TEST(Outline, PixelsAreCoveredByTheirDistance) {
    for (const auto &[a, b] : {std::pair{12, 12}, {25, 3}, {4, 17}, {8, 0}, {0, 6}, {1, 1}})
        for (const double width : {1.0, 2.0, 5.5}) {
            const Curve curve(a, b);
            const Canvas canvas = drawn(ellipse_waa(0, 0, a, b, width));
            for (int x = -a - 5; x <= a + 5; ++x)
                for (int y = -b - 5; y <= b + 5; ++y) {
                    const double away = curve.distance(x, y) - width / 2;
                    const double part = canvas.at(x, y);
                    EXPECT_TRUE(away > -0.71 || part == 1) << x << ", " << y << ": " << part;
                    EXPECT_TRUE(away < 0.71 || part == 0) << x << ", " << y << ": " << part;
                    EXPECT_TRUE(std::fabs(away) > 0.2 || (part > 0.2 && part < 0.8) || width == 1)
                        << a << " " << b << " " << width << ": " << x << ", " << y << ": " << part;
                }
        }
}

TEST(Outline, RectanglesOfOddSidesAreExact) {
    const Canvas canvas = drawn(ellipser_aa(0, 0, 9, 5));
    const Canvas turned = drawn(ellipser_aa(5, 9, 0, 0));
    expect_proper_coverage(canvas);
    for (const auto &[point, part] : canvas.coverage) {
        EXPECT_EQ(canvas.at(9 - point.first, point.second), part);
        EXPECT_EQ(canvas.at(point.first, 5 - point.second), part);
        EXPECT_EQ(turned.at(point.second, point.first), part);
    }
    EXPECT_NEAR(canvas.area(), circumference(4.5, 2.5), 0.2);
}

TEST(Outline, FlatOnesAreLinesAndPoints) {
    EXPECT_THAT(drawn(ellipser_aa(0, 3, 4, 3)).coverage,
                ElementsAre(std::pair(Point(0, 3), 1.0), std::pair(Point(1, 3), 1.0),
                            std::pair(Point(2, 3), 1.0), std::pair(Point(3, 3), 1.0),
                            std::pair(Point(4, 3), 1.0)));
    EXPECT_THAT(drawn(ellipser_aa(3, 1, 3, 0)).coverage,
                ElementsAre(std::pair(Point(3, 0), 1.0), std::pair(Point(3, 1), 1.0)));
    EXPECT_THAT(drawn(ellipser_aa(2, 2, 2, 2)).coverage, ElementsAre(std::pair(Point(2, 2), 1.0)));
    EXPECT_NEAR(drawn(circle_waa(0, 0, 0, 9)).area(), std::numbers::pi * 4.5 * 4.5, 0.5);
}

TEST(Outline, TheWidthChangesItContinuously) {
    for (const auto &[a, b] : {std::pair{9, 9}, {20, 4}, {6, 0}}) {
        Canvas before = drawn(ellipse_aa(0, 0, a, b));
        EXPECT_EQ(drawn(ellipse_waa(0, 0, a, b, 0)).coverage, before.coverage);
        EXPECT_EQ(drawn(ellipse_waa(0, 0, a, b, 1)).coverage, before.coverage);
        EXPECT_EQ(drawn(ellipse_waa(0, 0, a, b, std::nan(""))).coverage, before.coverage);
        for (double width = 1.01; width < 6; width += 0.01) {
            Canvas after = drawn(ellipse_waa(0, 0, a, b, width));
            for (const auto &[point, part] : after.coverage) {
                const double grown = part - before.at(point.first, point.second);
                ASSERT_TRUE(grown > -1e-9 && grown < 0.02) << width << ": " << grown;
            }
            before = std::move(after);
        }
    }
}

TEST(Outline, WideFormsRoundToWholePixels) {
    const Canvas expected = drawn(ellipser_waa(-4, -2, 5, 3, 2.5));
    EXPECT_EQ(drawn(ellipser_waa(-4.4, -1.6, 5.3, 3.49, 2.5)).coverage, expected.coverage);
    EXPECT_EQ(drawn(ellipser_waa(5, 3, -4, -2, 2.5)).coverage, expected.coverage);
    EXPECT_EQ(drawn(ellipse_waa(1, 2, 5, 3, 2)).coverage,
              drawn(ellipser_waa(-4, -1, 6, 5, 2)).coverage);
    EXPECT_EQ(drawn(circle_waa(1, 2, 4, 2)).coverage, drawn(ellipse_waa(1, 2, 4, 4, 2)).coverage);
    EXPECT_EQ(drawn(ellipser_waa(std::nan(""), 0, 4, 4, 1)).coverage,
              drawn(ellipser_aa(0, 0, 4, 4)).coverage);
}
