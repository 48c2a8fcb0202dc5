// `kestu image ...` as a user runs it.
#include "img/tiff_bytes.hpp"
#include "support/pty.hpp"
#include "support/test.hpp"
#include "tools/columns.hpp"

#include <nlohmann/json.hpp>

#include <filesystem>

#include <fcntl.h>
#include <sys/stat.h>

using namespace kestu::test;
using testing::ContainsRegex;

namespace {

// A gray ramp of 256 columns.
Tiff ramp(unsigned rows) {
    std::string row, samples;
    for (int level = 0; level < 256; ++level)
        row += static_cast<char>(level);
    for (unsigned y = 0; y < rows; ++y)
        samples += row;
    Tiff tiff(256, rows, 8, samples);
    tiff.set(259, 1)
        .set(284, 1)
        .set({305, ascii, 15, tiff.put("ramp\033[31m maker")})
        .set({296, shorts, 1, 3});
    return tiff.set_ratio(282, 100, 1).set_ratio(283, 200, 1);
}

std::string write_ramp(const TemporaryFolder &folder, const std::string &name, unsigned rows) {
    return folder.write(name, ramp(rows).bytes());
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
    const std::string path = folder.write("three.tif", ramp(2).set({277, shorts, 1, 3}).bytes());
    const Ran ran = run_kestu({"image", "info", path});
    EXPECT_EQ(ran.status, 0);
    EXPECT_THAT(ran.out, HasSubstr("not measured: The image is not grayscale."));
    EXPECT_EQ(run_kestu({"image", "histogram", path}).status, 1);
}

TEST(ImageHistogram, FitsTheWidthWithAndWithoutUnicode) {
    const TemporaryFolder folder;
    const std::string path = write_ramp(folder, "ramp.tif", 3);
    for (const size_t width : {20, 40, 100, 300})
        for (const std::string locale : {"LC_ALL=C", "LC_ALL=C.UTF-8"}) {
            const Ran ran = run_kestu(
                {"image", "histogram", "--width", std::to_string(width), path}, "", {locale});
            ASSERT_EQ(ran.status, 0);
            EXPECT_EQ(lines_of(ran.out).size(), 19u);
            const size_t last = ran.out.rfind('\n', ran.out.size() - 2); // a sentence
            expect_columns(ran.out.substr(0, last), width, locale == "LC_ALL=C");
            EXPECT_THAT(ran.out, Not(HasSubstr("\033"))) << "no colour when piped";
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
    EXPECT_DOUBLE_EQ(json[0]["deviation"], std::sqrt((256.0 * 256 - 1) / 12));
    auto rest = json[0];
    rest.erase("file");
    rest.erase("deviation");
    EXPECT_EQ(rest, nlohmann::json::parse(R"({"width": 256, "height": 3, "bits": 8, "minimum": 0,
        "maximum": 255, "mean": 127.5, "threshold": 126.5, "entropy": 8.0})"));
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
         {std::vector<std::string>{}, {"image"}, {"image", "info"}}) {
        std::vector<std::string> help = command, version = command;
        help.emplace_back("--help");
        version.emplace_back("--version");
        EXPECT_THAT(run_kestu(help).out, HasSubstr("Usage: kestu"));
        EXPECT_THAT(run_kestu(version).out, StartsWith("kestu 1.0.0\n"));
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
