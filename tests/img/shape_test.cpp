// Shapes: the plain walks pixel for pixel, and what the smooth outlines look like.
#include "canvas.hpp"
#include "support/test.hpp"

#include <numbers>

using namespace kestu::test;

namespace {

constexpr auto *circle = kestu_img_circle;
constexpr auto *ellipse = kestu_img_ellipse;
constexpr auto *ellipser = kestu_img_ellipser;
constexpr auto *circle_aa = kestu_img_circle_aa;
constexpr auto *ellipse_aa = kestu_img_ellipse_aa;
constexpr auto *ellipser_aa = kestu_img_ellipser_aa;
constexpr auto *circle_waa = kestu_img_circle_waa;
constexpr auto *ellipse_waa = kestu_img_ellipse_waa;
constexpr auto *ellipser_waa = kestu_img_ellipser_waa;

// A shape that waits for its canvas.
using Draw = std::function<kestu_error_t *(Canvas &)>;

template <typename Shape, typename... Numbers>
Draw shape(Shape *draw, Numbers... numbers) {
    return [=](Canvas &canvas) { return draw(numbers..., Canvas::plot, &canvas); };
}

template <typename Shape, typename... Numbers>
Canvas drawn(Shape *draw, Numbers... numbers) {
    Canvas canvas;
    EXPECT_OK(shape(draw, numbers...)(canvas));
    return canvas;
}

std::vector<Draw> centred_shapes(int x, int y, int a, int b) {
    return {shape(circle, x, y, a), shape(circle_aa, x, y, a), shape(ellipse, x, y, a, b),
            shape(ellipse_aa, x, y, a, b)};
}

std::vector<Draw> every_shape(int a, int b) {
    auto shapes = centred_shapes(0, 0, a, b);
    for (const Draw &draw : {shape(ellipser, 0, 0, a, b), shape(ellipser_aa, 0, 0, a, b),
                             shape(circle_waa, 0, 0, a, 3), shape(ellipse_waa, 0, 0, a, b, 3),
                             shape(ellipser_waa, 0, 0, a, b, 3)})
        shapes.push_back(draw);
    return shapes;
}

// From a point to the ellipse around the origin: the best of some points of a quadrant, and then of
// the angles around it.
double distance(double x, double y, double a, double b) {
    const auto at = [=](double angle) {
        return std::hypot(std::fabs(x) - a * std::cos(angle), std::fabs(y) - b * std::sin(angle));
    };
    double best = 0, least = at(0);
    const auto look = [&](double angle) {
        const double found = at(angle);
        best = found < least ? angle : best;
        least = std::min(least, found);
    };
    for (double angle = 0.05; angle < 1.6; angle += 0.05)
        look(angle);
    for (double step = 0.05; step > 1e-3; step *= 0.6)
        for (const double angle : {best - step, best + step})
            look(angle);
    return least;
}

// The part of a pixel within half a line's width of the ellipse, by samples that are spread evenly
// in every direction.
double sampled_part(double x, double y, double a, double b, double width) {
    constexpr int samples = 150;
    double covered = 0;
    for (int i = 0; i < samples; ++i) {
        const double dx = std::fmod(i * 0.7548776662466927, 1) - 0.5;
        const double dy = std::fmod(i * 0.5698402909980532, 1) - 0.5;
        covered += distance(x + dx, y + dy, a, b) <= width / 2;
    }
    return covered / samples;
}

// The pixels are mirrored at the middle of a rectangle from the origin to (right, low), or of one
// around the origin.
void expect_symmetry(const Canvas &canvas, int right = 0, int low = 0) {
    for (const auto &[point, part] : canvas.coverage) {
        const auto [x, y] = point;
        EXPECT_DOUBLE_EQ(canvas.at(right - x, y), part) << x << ", " << y;
        EXPECT_DOUBLE_EQ(canvas.at(x, low - y), part) << x << ", " << y;
    }
}

// No holes and nothing too much: what lies within the line around a centre is full, what lies
// outside is untouched, and what its edges cross has its true part. Each pixel comes once.
void expect_line(const Canvas &canvas, double middle, double a, double b, double width) {
    const bool is_flat = a * b == 0;
    const double tolerance = is_flat && width < 2 ? 0.15 : 0.06;
    const int reach = static_cast<int>(std::max(a, b) + width + middle) + 2;
    double sum = 0;
    for (int x = -reach; x <= reach; ++x)
        for (int y = -reach; y <= reach; ++y) {
            const double part = canvas.at(x, y), px = x - middle, py = y - middle;
            const double away = distance(px, py, a, b) - width / 2;
            const double expected = away > 0.71    ? 0
                                    : away < -0.71 ? 1
                                                   : sampled_part(px, py, a, b, width);
            const bool is_crossed = std::fabs(away) <= 0.71;
            EXPECT_NEAR(part, expected, is_crossed ? tolerance : 0) << x << ", " << y;
            sum += expected;
        }
    EXPECT_EQ(canvas.plotted.size(), canvas.coverage.size());
    EXPECT_GT(canvas.lowest, 0);
    EXPECT_LE(canvas.highest, 1);
    EXPECT_NEAR(canvas.area() / sum, 1, is_flat ? 0.03 : 0.004);
}

} // namespace

TEST(Shapes, PlainWalksAreFixedToTheLetter) {
    const struct {
        Canvas canvas;
        const char *walk;
    } cases[] = {
        {drawn(circle, 5, 6, 0), "5,6 5,6 5,6 5,6 "},
        {drawn(circle, 5, 6, -9), "-4,6 5,-3 14,6 5,15 "},
        {drawn(circle, 0, 0, 1), "1,0 0,1 -1,0 0,-1 "},
        {drawn(circle, 10, 20, 2),
         "12,20 10,22 8,20 10,18 12,21 9,22 8,19 11,18 11,22 8,21 9,18 12,19 "},
        {drawn(ellipse, 7, 7, 0, 0), "7,7 7,7 7,7 7,7 "},
        {drawn(ellipse, 3, 4, 0, 2), "3,4 3,4 3,4 3,4 3,5 3,3 3,6 3,2 "},
        {drawn(ellipse, 0, 0, 2, 1), "2,0 -2,0 -2,0 2,0 1,1 -1,1 -1,-1 1,-1 0,1 0,1 0,-1 0,-1 "},
        {drawn(ellipse, 0, 0, 2, 0), "2,0 -2,0 -2,0 2,0 1,0 -1,0 -1,0 1,0 0,0 0,0 0,0 0,0 "},
        {drawn(ellipser, 0, 5, 3, 5), "3,5 0,5 0,5 3,5 2,5 1,5 1,5 2,5 1,5 2,5 1,5 2,5 "},
        {drawn(ellipser, 2, 2, 2, 2), "2,2 2,2 2,2 2,2 "},
        {drawn(circle, 0, 0, 4), "4,0 0,4 -4,0 0,-4 4,1 -1,4 -4,-1 1,-4 3,2 -2,3 -3,-2 2,-3 "
                                 "2,3 -3,2 -2,-3 3,-2 1,4 -4,1 -1,-4 4,-1 "},
        {drawn(ellipser, 0, 0, 6, 3), "6,2 0,2 0,1 6,1 5,3 1,3 1,0 5,0 4,3 2,3 2,0 4,0 "
                                      "3,3 3,3 3,0 3,0 3,3 3,3 3,0 3,0 "},
    };
    for (const auto &[canvas, walk] : cases)
        EXPECT_EQ(canvas.walk(), walk);
}

TEST(Shapes, RectanglesAreTakenFromAnyCorner) {
    for (const Canvas &canvas :
         {drawn(ellipser, 6, 3, 0, 0), drawn(ellipser, 0, 3, 6, 0), drawn(ellipser, 6, 0, 0, 3)})
        EXPECT_EQ(canvas.walk(), drawn(ellipser, 0, 0, 6, 3).walk());
}

TEST(Shapes, TheFirstErrorOfTheCallbackEndsEveryShape) {
    for (const auto &[a, b] : {std::pair{9, 4}, {9, 0}, {0, 9}})
        for (const Draw &draw : every_shape(a, b)) {
            Canvas whole;
            EXPECT_OK(draw(whole));
            for (size_t call = 1; call <= whole.plotted.size(); ++call) {
                Canvas canvas;
                canvas.fails_at = call;
                EXPECT_CHAIN(draw(canvas), 7, "full");
                EXPECT_EQ(canvas.plotted.size(), call);
            }
        }
}

TEST(Shapes, PixelsThatAnIntCannotNameAreLeftOut) {
    const auto at_the_end = centred_shapes(INT_MAX, INT_MIN, 5, 3);
    const auto at_the_origin = centred_shapes(0, 0, 5, 3);
    for (size_t i = 0; i < at_the_end.size(); ++i) {
        Canvas canvas, expected;
        EXPECT_OK(at_the_end[i](canvas));
        EXPECT_OK(at_the_origin[i](expected));
        std::erase_if(expected.plotted, [](Point p) { return p.first > 0 || p.second < 0; });
        for (auto &[x, y] : expected.plotted) {
            x += INT_MAX;
            y += INT_MIN;
        }
        EXPECT_EQ(canvas.plotted, expected.plotted);
    }
}

// Huge curves are straight where they begin.
TEST(Shapes, NothingOverflowsAtTheEndsOfInt) {
    const auto begin = [](const Draw &draw, size_t pixels = 300) {
        Canvas canvas;
        canvas.fails_at = pixels;
        kestu_error_clear(draw(canvas));
        return canvas;
    };
    const double inf = std::numeric_limits<double>::infinity();
    std::vector<Draw> straight = centred_shapes(0, 0, INT_MAX, INT_MAX);
    straight.push_back(shape(ellipser_waa, -inf, -1e300, inf, 1e300, 3));
    straight.push_back(shape(ellipser, INT_MIN, INT_MIN, INT_MAX, INT_MAX));
    straight.push_back(shape(ellipser_aa, INT_MAX, INT_MAX, INT_MIN, INT_MIN));
    for (const Draw &draw : straight) {
        const Canvas canvas = begin(draw);
        EXPECT_EQ(canvas.plotted.size(), 300u);
        for (const auto &[x, y] : canvas.plotted)
            EXPECT_TRUE(std::max(std::abs(x + 0.5), std::abs(y + 0.5)) > INT_MAX - 9) << x << y;
    }
    const auto [x, y] = begin(shape(ellipse, 0, 0, 3000000, 2000000), 40000).plotted.back();
    EXPECT_NEAR(std::hypot(x / 3e6, y / 2e6), 1, 5e-7);
    EXPECT_EQ(begin(shape(circle_waa, 0, 0, 5, inf)).plotted.size(), 300u);
    for (const Draw &draw : every_shape(INT_MIN, INT_MIN))
        EXPECT_LE(begin(draw).plotted.size(), 300u);
}

// The pixels of the plain circle and their neighbours, covered as by the ellipse of the same size,
// of which only the least parts are missing. The walk begins and ends with the ends of the axes.
TEST(SmoothCircle, WalksAsThePlainOneAndCoversAsTheEllipse) {
    EXPECT_EQ(drawn(circle_aa, 4, 5, 0).walk(), "4,5 4,5 4,5 4,5 ");
    for (const int r : {1, 2, 3, 5, 6, 7, 10, 11, 16, 17, 59, 173, 500}) {
        SCOPED_TRACE(r);
        const Canvas canvas = drawn(circle_aa, 0, 0, r);
        Canvas expected = drawn(ellipse_aa, 0, 0, r, r);
        const std::vector<Point> ends = {{r, 0}, {0, r}, {-r, 0}, {0, -r}};
        EXPECT_TRUE(std::equal(ends.begin(), ends.end(), canvas.plotted.begin()));
        EXPECT_TRUE(std::is_permutation(ends.begin(), ends.end(), canvas.plotted.end() - 4));
        for (const Point &end : ends)
            expected.coverage[end] = 2;
        expected.coverage.erase({0, 0});
        EXPECT_EQ(canvas.plotted.size(), canvas.coverage.size() + 4);
        EXPECT_GT(canvas.lowest, 0);
        EXPECT_LE(canvas.highest, 1);
        expect_symmetry(canvas);
        for (const auto &[point, part] : canvas.coverage)
            EXPECT_NEAR(part, expected.at(point.first, point.second), 1e-9);
        for (const auto &[point, part] : expected.coverage)
            EXPECT_TRUE(part < 0.1 || canvas.coverage.contains(point));
    }
}

// Lines that leave a hole, that just close it, and that cover more than all of it. Flat
// ones end in whole pixels.
TEST(Outline, PixelsAreCoveredByTheirPart) {
    const std::pair<int, int> sizes[] = {{12, 12}, {25, 3}, {4, 17}, {8, 0},  {0, 6},
                                         {1, 1},   {2, 1},  {9, 8},  {20, 10}};
    for (const auto &[a, b] : sizes)
        for (const double width : {1.0, 1.3, 2.5, 5.5, 12.0}) {
            SCOPED_TRACE(testing::Message() << a << ", " << b << ", " << width);
            const Canvas canvas = drawn(ellipse_waa, 0, 0, a, b, width);
            expect_line(canvas, 0, a, b, width);
            expect_symmetry(canvas);
        }
}

TEST(Outline, RectanglesOfOddSidesAreExact) {
    const Canvas canvas = drawn(ellipser_aa, 0, 0, 9, 5);
    const Canvas turned = drawn(ellipser_aa, 5, 9, 0, 0);
    expect_symmetry(canvas, 9, 5);
    for (const auto &[point, part] : canvas.coverage)
        EXPECT_DOUBLE_EQ(turned.at(point.second, point.first), part);
    expect_line(drawn(ellipser_aa, 0, 0, 11, 11), 5.5, 5.5, 5.5, 1);
}

TEST(Outline, FlatOnesAreLinesAndPoints) {
    using Coverage = std::map<Point, double>;
    EXPECT_EQ(drawn(ellipser_aa, 0, 3, 4, 3).coverage,
              (Coverage{{{0, 3}, 1}, {{1, 3}, 1}, {{2, 3}, 1}, {{3, 3}, 1}, {{4, 3}, 1}}));
    EXPECT_EQ(drawn(ellipser_aa, 3, 1, 3, 0).coverage, (Coverage{{{3, 0}, 1}, {{3, 1}, 1}}));
    EXPECT_EQ(drawn(ellipser_aa, 2, 2, 2, 2).coverage, (Coverage{{{2, 2}, 1}}));
    EXPECT_NEAR(drawn(circle_waa, 0, 0, 0, 9).area(), std::numbers::pi * 4.5 * 4.5, 0.5);
}

TEST(Outline, WideFormsRoundToWholePixelsAndBeginAtWidth1) {
    const auto rectangle = [](double x0, double y0, double x1, double y1, double width) {
        return drawn(ellipser_waa, x0, y0, x1, y1, width).coverage;
    };
    const auto expected = rectangle(-4, -2, 5, 3, 2.5);
    EXPECT_EQ(rectangle(-4.4, -1.6, 5.3, 3.49, 2.5), expected);
    EXPECT_EQ(rectangle(5, 3, -4, -2, 2.5), expected);
    EXPECT_EQ(drawn(ellipse_waa, 1, 2, 5, 3, 2).coverage, rectangle(-4, -1, 6, 5, 2));
    EXPECT_EQ(drawn(circle_waa, 1, 2, 4, 2).coverage, rectangle(-3, -2, 5, 6, 2));
    EXPECT_EQ(rectangle(std::nan(""), 0, 4, 4, 1), drawn(ellipser_aa, 0, 0, 4, 4).coverage);
    for (const double width : {0.0, 1.0, std::nan("")})
        EXPECT_EQ(drawn(ellipse_waa, 0, 0, 20, 4, width).coverage,
                  drawn(ellipse_aa, 0, 0, 20, 4).coverage);
}
