// The commands of `kestu image` that make pictures, as a user runs them.
#include "img/picture.hpp"
#include "img/tiff_bytes.hpp"
#include "support/test.hpp"

#include <filesystem>
#include <iterator>
#include <sstream>

using namespace kestu::test;
using testing::Gt;
using testing::Lt;
namespace fs = std::filesystem;

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

Rows read_rows(const std::string &path) {
    Image img;
    EXPECT_OK(kestu_img_read(path.c_str(), &img));
    return rows_of(img);
}

// A picture of one row of 8 bits.
std::string write_row(const TemporaryFolder &folder, const std::vector<uint8_t> &row,
                      int photometric) {
    Picture<uint8_t> picture({row});
    picture.img.photometric = photometric;
    std::string path = folder / "row.tif";
    EXPECT_OK(kestu_img_write_tiff(path.c_str(), &picture.img));
    return path;
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
                                 " --size 40 30 --level 200 --bits " + std::to_string(bits));
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

TEST(ImageDraw, DrawsOnACopyOfAPicture) {
    const TemporaryFolder folder;
    const std::string below = write_row(folder, {10, 200, 30, 40}, 0);
    const std::string out = folder / "out.tif";
    EXPECT_EQ(run_kestu({"image", "draw", "circle", "1", "0", "0", out, "--on", below}).status, 0);
    EXPECT_THAT(read_rows(out), ElementsAre(ElementsAre(10, 255, 30, 40)));
    EXPECT_EQ(
        run_kestu({"image", "draw", "circle", "1", "0", "1", below, "--on", below, "--level", "7"})
            .status,
        0);
    EXPECT_THAT(read_rows(below), ElementsAre(ElementsAre(7, 200, 7, 40)));
    const Ran too_bright =
        run_kestu({"image", "draw", "circle", "1", "0", "1", out, "--on", below, "--level", "256"});
    EXPECT_EQ(too_bright.status, 2);
    EXPECT_THAT(too_bright.err, HasSubstr("at most 255"));
}

TEST(ImageDraw, RefusesWhatCannotBeDrawn) {
    const TemporaryFolder folder;
    const std::string out = folder / "out.tif";
    for (const std::vector<std::string> &arguments :
         std::vector<std::vector<std::string>>{{"square", "1", "2", "3"},
                                               {"circle", "1", "2"},
                                               {"circle", "1.5", "2", "3"},
                                               {"circle", "1", "2", "3e9", "--aa"},
                                               {"circle", "1", "2", "3", "--aa", "--width", "2"},
                                               {"circle", "1", "2", "3", "--width", "-1"},
                                               {"circle", "1", "2", "3", "--size", "0", "5"},
                                               {"circle", "1", "2", "3", "--bits", "12"}}) {
        std::vector<std::string> command = {"image", "draw"};
        command.insert(command.end(), arguments.begin(), arguments.end());
        command.insert(command.begin() + 5, out);
        EXPECT_EQ(run_kestu(command).status, 2);
    }
    EXPECT_FALSE(fs::exists(out));
}

TEST(ImageConversions, TellWhatTheLevelsStandFor) {
    const TemporaryFolder folder;
    const std::string out = folder / "out.tif";
    const std::string white_is_zero = write_row(folder, {0, 128, 255}, 0);
    const Ran density = run_kestu({"image", "density", white_is_zero, out, "--saturated", "5"});
    EXPECT_EQ(density.status, 0) << density.err;
    EXPECT_EQ(density.out, out + ": levels 0 to 65535 stand for 0 to 5\n");
    EXPECT_THAT(read_rows(out),
                ElementsAre(ElementsAre(0, int(std::log10(255.0 / 127) / 5 * 65535), 65535)));
    const Ran fuji = run_kestu({"image", "fuji", white_is_zero, out, "--latitude", "4",
                                "--resolution", "50", "--sensitivity", "1000"});
    EXPECT_EQ(fuji.out, out + ": levels 0 to 65535 stand for 0.01 to 100\n");
    EXPECT_EQ(run_kestu({"image", "mask", white_is_zero, out}).out,
              out + ": 2 of 3 pixels are data\n");
    EXPECT_THAT(read_rows(out), ElementsAre(ElementsAre(255, 255, 0)));
    EXPECT_EQ(run_kestu({"image", "fuji", white_is_zero, out, "--sensitivity", "0"}).status, 2);
    const Ran endless = run_kestu({"image", "fuji", white_is_zero, out, "--latitude", "1000"});
    EXPECT_EQ(endless.status, 1);
    EXPECT_THAT(endless.err, HasSubstr("too large for a picture"));
}

TEST(ImageConversions, InfiniteDensitiesCountAsSaturated) {
    const TemporaryFolder folder;
    const std::string out = folder / "out.tif";
    const std::string black_is_zero = write_row(folder, {0, 1, 254, 255}, 1);
    EXPECT_EQ(run_kestu({"image", "density", black_is_zero, out, "--saturated", "5"}).status, 0);
    const std::vector<int> row = read_rows(out)[0];
    EXPECT_GE(row[0], 65534);
    EXPECT_EQ(row[3], row[0]);
    EXPECT_THAT(row[1], AllOf(Gt(30000), Lt(32000)));
    EXPECT_EQ(row[2], 0);
}

TEST(ImageConversions, RefuseWhatIsNotMeasuredBeforeTheyAskForMemory) {
    const TemporaryFolder folder;
    const std::string out = folder / "out.tif";
    kestu_img_t img = {};
    img.width = img.height = INT_MAX;
    img.samples = 1;
    img.bits[0] = 4;
    const std::string path = folder / "four.tif";
    EXPECT_OK(kestu_img_write_tiff(path.c_str(), &img));
    const Ran deep = run_kestu({"image", "density", path, out});
    EXPECT_EQ(deep.status, 1);
    EXPECT_THAT(deep.err, HasSubstr("Error: Can't calculate optical intensity."));
    EXPECT_FALSE(fs::exists(out));
}

// What was there stays, and nothing else remains.
TEST(ImageConversions, AFailureLeavesNothingHalf) {
    const TemporaryFolder folder;
    const std::string source = write_row(folder, std::vector<uint8_t>(2000), 0);
    const std::string out = folder.write("out.tif", "before");
    const std::string limited = "ulimit -f 1; trap '' XFSZ; exec " + std::string(KESTU_PROGRAM) +
                                " image density " + source + " " + out;
    const Ran full = run({"bash", "-c", limited});
    EXPECT_EQ(full.status, 1);
    EXPECT_THAT(full.err, HasSubstr(out + ": Error(120032): "));
    EXPECT_EQ(read_file(out), "before");
    EXPECT_EQ(run_kestu({"image", "mask", folder / "none", out}).status, 1);
    EXPECT_EQ(read_file(out), "before");
    EXPECT_EQ(std::distance(fs::directory_iterator(folder.path), fs::directory_iterator()), 2);
    const Ran refused = run_kestu({"image", "mask", source, folder / "no/out.tif"});
    EXPECT_EQ(refused.status, 1);
    EXPECT_THAT(refused.err, HasSubstr("out.tif: cannot be written: No such file or directory"));
    EXPECT_EQ(run_kestu({"image", "mask", source, "/dev/full"}).status, 1);
    EXPECT_EQ(run_kestu({"image", "mask", source, "/dev/null"}).status, 0);
}
