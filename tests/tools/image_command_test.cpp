// `kestu image ...` as a user runs it.
#include "support/process.hpp"
#include "support/pty.hpp"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>
#include <tiffio.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <sstream>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace kestu::test;
using testing::AllOf;
using testing::ContainsRegex;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

namespace {

// A gray ramp of 256 columns and `rows` rows, written by libtiff.
std::string write_ramp(const TemporaryFolder &folder, const std::string &name, int rows,
                       int samples = 1) {
    const std::string path = folder / name;
    TIFF *tiff = TIFFOpen(path.c_str(), "wl");
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, 256);
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, rows);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 8);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, samples);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
    TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    TIFFSetField(tiff, TIFFTAG_RESOLUTIONUNIT, RESUNIT_CENTIMETER);
    TIFFSetField(tiff, TIFFTAG_XRESOLUTION, 100.0);
    TIFFSetField(tiff, TIFFTAG_YRESOLUTION, 200.0);
    TIFFSetField(tiff, TIFFTAG_SOFTWARE, "ramp\033[31m maker");
    std::vector<unsigned char> row;
    for (int i = 0; i < 256 * samples; ++i)
        row.push_back(static_cast<unsigned char>(i / samples));
    for (int y = 0; y < rows; ++y)
        TIFFWriteScanline(tiff, row.data(), static_cast<uint32_t>(y));
    TIFFClose(tiff);
    return path;
}

std::vector<std::string> lines_of(const std::string &text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);)
        lines.push_back(line);
    return lines;
}

// How many characters a line shows: bytes that do not continue a UTF-8 character.
size_t columns_of(const std::string &line) {
    return static_cast<size_t>(
        std::count_if(line.begin(), line.end(), [](char c) { return (c & 0xC0) != 0x80; }));
}

} // namespace

TEST(ImageInfo, TellsEveryFieldInWordsAndUnits) {
    const TemporaryFolder folder;
    const Ran ran = run_kestu({"image", "info", write_ramp(folder, "ramp.tif", 10)});
    EXPECT_EQ(ran.status, 0);
    EXPECT_THAT(ran.err, IsEmpty());
    for (const char *part :
         {"256 x 10 pixels", "254 x 508 pixels per inch", "10 x 20 pixels per mm", "centimetre (3)",
          "25.6 x 0.5 mm", "black is zero (1)", "none (1)", "chunky (1)", "2,560 bytes",
          "8-bit matrix", "8.0000 bits per pixel", "126.50 of 0 to 255"})
        EXPECT_THAT(ran.out, HasSubstr(part));
    EXPECT_THAT(ran.out, AllOf(HasSubstr("ramp\\x1b[31m maker"), Not(HasSubstr("\033"))))
        << "a text from the file must not reach the terminal raw";
}

TEST(ImageInfo, GoesOnAfterAFileThatFails) {
    const TemporaryFolder folder;
    const std::string good = write_ramp(folder, "good.tif", 2);
    const std::string text = folder.write("note.txt", "not a picture");
    const Ran ran = run_kestu({"image", "info", folder / "none.tif", text, folder.path, good});
    EXPECT_EQ(ran.status, 1);
    EXPECT_THAT(ran.out, StartsWith(good));
    EXPECT_THAT(ran.err, HasSubstr("none.tif: Error(120030): Cannot read image."));
    EXPECT_THAT(ran.err, HasSubstr("Cannot open file '" + (folder / "none.tif") + "'"));
    EXPECT_THAT(ran.err, HasSubstr("note.txt: Error(120154): Image type is unknown."));
    EXPECT_THAT(ran.err, HasSubstr(folder.path + ": Error(120031): "));
}

TEST(ImageInfo, SaysWhyAColourImageIsNotMeasured) {
    const TemporaryFolder folder;
    const std::string path = write_ramp(folder, "gray.tif", 2);
    std::string bytes = read_file(path);
    const std::string one_sample("\x15\x01\x03\x00\x01\x00\x00\x00\x01", 9);
    const size_t at = bytes.find(one_sample);
    ASSERT_NE(at, std::string::npos);
    bytes[at + 8] = 3;
    const Ran ran = run_kestu({"image", "info", folder.write("three.tif", bytes)});
    EXPECT_EQ(ran.status, 0);
    EXPECT_THAT(ran.out, HasSubstr("not measured: The image is not grayscale."));
    EXPECT_EQ(run_kestu({"image", "histogram", folder / "three.tif"}).status, 1);
}

TEST(ImageHistogram, FitsTheWidthWithAndWithoutUnicode) {
    const TemporaryFolder folder;
    const std::string path = write_ramp(folder, "ramp.tif", 3);
    for (const int width : {20, 40, 100, 300}) {
        for (const char *locale : {"LC_ALL=C", "LC_ALL=C.UTF-8"}) {
            const Ran ran = run_kestu(
                {"image", "histogram", "--width", std::to_string(width), path}, "", {locale});
            ASSERT_EQ(ran.status, 0);
            const std::vector<std::string> lines = lines_of(ran.out);
            ASSERT_EQ(lines.size(), 19u);
            for (size_t i = 0; i + 1 < lines.size(); ++i)
                EXPECT_LE(columns_of(lines[i]), static_cast<size_t>(width)) << lines[i];
            EXPECT_THAT(ran.out, Not(HasSubstr("\033"))) << "no colour when piped";
            const bool ascii =
                std::all_of(ran.out.begin(), ran.out.end(), [](char c) { return c > 0; });
            EXPECT_EQ(ascii, std::string(locale) == "LC_ALL=C");
        }
    }
}

TEST(ImageHistogram, WritesCsvAndSvg) {
    const TemporaryFolder folder;
    const std::string path = write_ramp(folder, "ramp.tif", 3);
    const Ran csv = run_kestu({"image", "histogram", path, "--csv"});
    EXPECT_EQ(csv.status, 0);
    const std::vector<std::string> lines = lines_of(csv.out);
    ASSERT_EQ(lines.size(), 257u);
    EXPECT_EQ(lines[0], "level,count");
    EXPECT_EQ(lines[256], "255,3");
    const Ran svg = run_kestu({"image", "histogram", path, "--svg", folder / "out.svg"});
    EXPECT_EQ(svg.status, 0);
    EXPECT_THAT(read_file(folder / "out.svg"),
                AllOf(StartsWith("<svg"), HasSubstr("threshold 126.50"), HasSubstr("</svg>")));
    const Ran refused = run_kestu({"image", "histogram", path, "--svg", folder / "no/out.svg"});
    EXPECT_EQ(refused.status, 1);
    EXPECT_THAT(refused.err, HasSubstr("cannot be written: No such file or directory"));
}

TEST(ImageStats, AlignsARowForEachFile) {
    const TemporaryFolder folder;
    const Ran ran = run_kestu({"image", "stats", write_ramp(folder, "a.tif", 3),
                               write_ramp(folder, "längerer.tif", 1000)});
    EXPECT_EQ(ran.status, 0);
    const std::vector<std::string> lines = lines_of(ran.out);
    ASSERT_EQ(lines.size(), 4u);
    for (const std::string &line : lines)
        EXPECT_EQ(columns_of(line), columns_of(lines[0])) << line;
    EXPECT_THAT(lines[0], ContainsRegex("^File +Size +Depth +Minimum +Maximum +Mean +Deviation "
                                        "+Threshold +Entropy$"));
    EXPECT_THAT(lines[1], ContainsRegex("^ +pixels +bits +level .* bits/pixel$"));
    EXPECT_THAT(lines[2],
                ContainsRegex("/a.tif +256 x 3 +8 +0 +255 +127.500 +73.900 +126.50 +8.0000$"));
    EXPECT_THAT(lines[3], HasSubstr("längerer.tif  256 x 1000 "));
}

TEST(ImageStats, IsOneArrayOfJsonWhateverTheNames) {
    const TemporaryFolder folder;
    const Ran ran = run_kestu({"image", "stats", "--json", write_ramp(folder, "\"\n\xff.tif", 3),
                               folder / "none", write_ramp(folder, "b.tif", 1)});
    EXPECT_EQ(ran.status, 1);
    const auto json = nlohmann::json::parse(ran.out);
    ASSERT_EQ(json.size(), 2u);
    EXPECT_EQ(json[0]["file"], folder / "\"\n\xEF\xBF\xBD.tif");
    EXPECT_EQ(json[0]["width"], 256);
    EXPECT_EQ(json[0]["height"], 3);
    EXPECT_EQ(json[0]["bits"], 8);
    EXPECT_EQ(json[0]["minimum"], 0);
    EXPECT_EQ(json[0]["maximum"], 255);
    EXPECT_EQ(json[0]["mean"], 127.5);
    EXPECT_DOUBLE_EQ(json[0]["deviation"], std::sqrt((256.0 * 256 - 1) / 12));
    EXPECT_EQ(json[0]["threshold"], 126.5);
    EXPECT_EQ(json[0]["entropy"], 8.0);
    EXPECT_EQ(nlohmann::json::parse(run_kestu({"image", "stats", "--json", "/none"}).out).size(),
              0u);
}

// A pipe keeps the program waiting until the bar is seen.
TEST(ImageStats, ShowsProgressUntilTheEndAndGoesOnAfterAFailure) {
    const TemporaryFolder folder;
    const std::string pipe = folder / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    Terminal terminal(200, 20);
    terminal.run({KESTU_PROGRAM, "image", "stats", write_ramp(folder, "a.tif", 3), pipe,
                  write_ramp(folder, "b.tif", 3)});
    terminal.wait_for_text("kestu image stats [######..............]  33 %|");
    close(open(pipe.c_str(), O_WRONLY));
    EXPECT_EQ(terminal.wait_for_end(), 1);
    EXPECT_THAT(terminal.shown(),
                AllOf(HasSubstr(pipe + ": Error(120031): Cannot read image."), HasSubstr("a.tif"),
                      HasSubstr("b.tif"), Not(HasSubstr("%"))));
}

TEST(Program, TellsUsageAndVersionEverywhere) {
    EXPECT_EQ(run_kestu({}).status, 2);
    EXPECT_EQ(run_kestu({"nonsense"}).status, 2);
    EXPECT_EQ(run_kestu({"image", "info"}).status, 2);
    EXPECT_EQ(run_kestu({"image", "histogram", "a", "--width", "5"}).status, 2);
    for (const std::vector<std::string> &command :
         {std::vector<std::string>{}, {"image"}, {"image", "info"}, {"image", "histogram"}}) {
        for (const char *flag : {"--help", "--version"}) {
            std::vector<std::string> arguments = command;
            arguments.emplace_back(flag);
            const Ran ran = run_kestu(arguments);
            EXPECT_EQ(ran.status, 0);
            EXPECT_THAT(ran.out,
                        ContainsRegex(flag == std::string("--help") ? "Usage: kestu"
                                                                    : "^kestu 1\\.0\\.0\n"));
        }
    }
}

TEST(Program, ReportsOutputThatCannotBeWritten) {
    const TemporaryFolder folder;
    const std::string path = write_ramp(folder, "ramp.tif", 3);
    const Ran ran =
        run({"sh", "-c", std::string(KESTU_PROGRAM) + " image info " + path + " > /dev/full"});
    EXPECT_EQ(ran.status, 1);
    EXPECT_THAT(ran.err, HasSubstr("standard output cannot be written"));
}
