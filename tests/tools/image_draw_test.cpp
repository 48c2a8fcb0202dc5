// What `kestu image draw` makes, beside what the library draws.
#include "img/tiff_bytes.hpp"
#include "support/test.hpp"

#include <iterator>
#include <sstream>

using namespace kestu::test;

namespace {

using Rows = std::vector<std::vector<int>>;

// The samples row by row.
Rows rows_of(const kestu_img_t &img) {
    Rows rows(static_cast<size_t>(img.height));
    for (int y = 0; y < img.height; ++y)
        for (int x = 0; x < img.width; ++x)
            rows[static_cast<size_t>(y)].push_back(img.data8 ? img.data8[y][x] : img.data16[y][x]);
    return rows;
}

using Draw = std::function<kestu_error_t *(kestu_img_plot_func, void *)>;

// What the library draws, on 40 x 30 pixels with 200 as the largest level.
Rows expected_rows(const Draw &draw) {
    Rows rows(30, std::vector<int>(40));
    const auto plot = [](int x, int y, void *data, double intensity) -> kestu_error_t * {
        if (x >= 0 && x < 40 && y >= 0 && y < 30) {
            int &level =
                (*static_cast<Rows *>(data))[static_cast<size_t>(y)][static_cast<size_t>(x)];
            level = std::max(level, static_cast<int>(std::lround(intensity * 200)));
        }
        return nullptr;
    };
    EXPECT_OK(draw(plot, &rows));
    return rows;
}

template <typename Shape, typename... Numbers>
Draw shape(Shape *draw, Numbers... numbers) {
    return [=](kestu_img_plot_func plot, void *data) { return draw(numbers..., plot, data); };
}

} // namespace

TEST(ImageDraw, DrawsEveryShapeAsTheLibraryDoes) {
    const TemporaryFolder folder;
    const std::string out = folder / "out.tif";
    const std::pair<const char *, Draw> cases[] = {
        {"circle 20 15 9", shape(kestu_img_circle, 20, 15, 9)},
        {"circle 20 -3 9 --aa", shape(kestu_img_circle_aa, 20, -3, 9)},
        {"circle 20.4 15 9 --width 3.5", shape(kestu_img_circle_waa, 20.4, 15, 9, 3.5)},
        {"ellipse 20 15 18 6", shape(kestu_img_ellipse, 20, 15, 18, 6)},
        {"ellipse 20 15 18 60 --aa", shape(kestu_img_ellipse_aa, 20, 15, 18, 60)},
        {"ellipse 20 15 18 6 --width 2", shape(kestu_img_ellipse_waa, 20, 15, 18, 6, 2)},
        {"ellipser 1 2 30 15", shape(kestu_img_ellipser, 1, 2, 30, 15)},
        {"ellipser 30 15 1 2 --aa", shape(kestu_img_ellipser_aa, 30, 15, 1, 2)},
        {"ellipser 1 2 30 15 --width 0", shape(kestu_img_ellipser_waa, 1, 2, 30, 15, 0)},
    };
    int bits = 8;
    for (const auto &[what, draw] : cases) {
        std::istringstream words(std::string("image draw ") + what + " " + out +
                                 " --force --size 40x30 --level 200 --bits " +
                                 std::to_string(bits));
        const Ran ran = run_kestu({std::istream_iterator<std::string>(words), {}});
        EXPECT_EQ(ran.status, 0) << ran.err;
        Image img;
        ASSERT_OK(kestu_img_read(out.c_str(), &img));
        EXPECT_EQ(img.bits[0], bits);
        EXPECT_EQ(img.photometric, 1);
        EXPECT_EQ(rows_of(img), expected_rows(draw)) << what;
        bits = 24 - bits;
    }
}
