// The bars that long commands show on a terminal.
#include "img/tiff_bytes.hpp"
#include "support/pty.hpp"
#include "support/test.hpp"

#include <filesystem>

#include <fcntl.h>
#include <sys/stat.h>

using namespace kestu::test;

// No processor is through the large file before anybody could see the bar.
TEST(Progress, OfSumsTellsTheTimeThatIsLeft) {
    const TemporaryFolder folder;
    const std::string large = folder.write("large", "");
    std::filesystem::resize_file(large, uintmax_t{1} << 40);
    Terminal terminal(200, 5), narrow(20, 5);
    terminal.run({KESTU_PROGRAM, "sum", "--crc32", large});
    narrow.run({KESTU_PROGRAM, "sum", "--crc32", large});
    terminal.wait_for_text(" left|");
    EXPECT_THAT(terminal.shown(), HasSubstr("kestu sum [...................."));
    narrow.wait_for_text("[..................|");
}

// A pipe keeps the program waiting until the bar is seen.
TEST(Progress, OfImagesIsShownUntilTheEndAndGoesOnAfterAFailure) {
    const TemporaryFolder folder;
    const std::string pipe = folder / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    Terminal terminal(200, 20);
    terminal.run({KESTU_PROGRAM, "image", "stats", folder.write("a.tif", Tiff().bytes()), pipe,
                  folder.write("b.tif", Tiff().bytes())});
    terminal.wait_for_text(" left|");
    EXPECT_THAT(terminal.shown(), HasSubstr("kestu image stats [######..............]  33 %  0:0"));
    close(open(pipe.c_str(), O_WRONLY));
    EXPECT_EQ(terminal.wait_for_end(), 1);
    EXPECT_THAT(terminal.shown(), AllOf(HasSubstr(pipe + ": is empty"), HasSubstr("a.tif"),
                                        HasSubstr("b.tif"), Not(HasSubstr("%"))));
}
