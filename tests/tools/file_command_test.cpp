// `kestu sum` and `kestu find` as a user runs them.
#include "support/process.hpp"
#include "support/pty.hpp"
#include "support/test.hpp"
#include "tools/columns.hpp"

#include <filesystem>
#include <sstream>

using namespace kestu::test;
namespace fs = std::filesystem;

namespace {

constexpr const char *sha1_of_abc = "a9993e364706816aba3e25717850c26c9cd0d89d";

// Files whose names and contents are a nuisance; returns their paths.
std::vector<std::string> nuisances(const TemporaryFolder &folder) {
    std::string bytes;
    for (unsigned i = 0; i < 1000000; ++i)
        bytes += static_cast<char>(i * 7919 >> 5);
    return {folder.write("plain", "abc"),         folder.write("empty", ""),
            folder.write(" two  blanks ", bytes), folder.write("line\nbreak\r", "x\n"),
            folder.write("back\\slash", "y"),     folder.write("*star (1) = ", "z"),
            folder.write("\xff\xfe", "w")};
}

std::vector<std::string> with(std::vector<std::string> command,
                              const std::vector<std::string> &more) {
    command.insert(command.end(), more.begin(), more.end());
    return command;
}

// Runs the program on a terminal of its own; both its streams come back in `out`.
Ran run_on_terminal(const std::string &arguments) {
    return run({"script", "-qec", std::string(KESTU_PROGRAM) + " " + arguments, "/dev/null"});
}

} // namespace

TEST(Sum, PrintsWhatTheUsualToolsPrint) {
    const TemporaryFolder folder;
    const std::vector<std::string> paths = nuisances(folder);
    const Ran sums = run_kestu(with({"sum"}, paths));
    EXPECT_EQ(sums.status, 0);
    EXPECT_THAT(sums.err, IsEmpty());
    EXPECT_EQ(sums.out, run(with({"sha1sum"}, paths)).out);
    EXPECT_EQ(run_kestu(with({"sum", "--sha1"}, paths)).out, sums.out);

    const Ran crcs = run_kestu(with({"sum", "--crc32"}, paths));
    const std::string reference =
        "import sys, zlib\n"
        "for p, line in zip(sys.argv[1:], sys.stdin):\n"
        "    assert '%08x  ' % zlib.crc32(open(p, 'rb').read()) == line.lstrip('\\\\')[:10]\n";
    EXPECT_EQ(lines_of(crcs.out).size(), paths.size());
    EXPECT_EQ(run(with({"python3", "-c", reference}, paths), crcs.out).err, "");
    EXPECT_EQ(run_kestu({"sum", "--crc16", "-"}, "123456789").out, "bb3d  -\n");
    EXPECT_EQ(run_kestu({"sum"}, "abc").out, std::string(sha1_of_abc) + "  -\n");
    EXPECT_EQ(run_kestu({"sum", "--crc32", "--sha1"}, "abc").status, 2);
}

TEST(SumCheck, ReadsTheListsOfTheUsualToolsAndTheyReadOurs) {
    const TemporaryFolder folder;
    const std::vector<std::string> paths = nuisances(folder);
    for (const char *style : {"--text", "--binary", "--tag"}) {
        const std::string list = folder.write("list", run(with({"sha1sum", style}, paths)).out);
        const Ran ours = run_kestu({"sum", "--check", list});
        EXPECT_EQ(ours.status, 0) << style << ours.out << ours.err;
        EXPECT_EQ(ours.out, run({"sha1sum", "--check", list}).out) << style;
        EXPECT_EQ(run_kestu({"sum", "--check", "--sha1", "--quiet"}, read_file(list)).out, "");
    }
    const std::string list = folder.write("list", run_kestu(with({"sum"}, paths)).out);
    EXPECT_EQ(run({"sha1sum", "--check", "--strict", list}).status, 0);
    for (const char *kind : {"--crc32", "--crc16"})
        EXPECT_EQ(
            run_kestu({"sum", "--check", "-"}, run_kestu(with({"sum", kind}, paths)).out).status,
            0);
}

TEST(SumCheck, TellsApartWhatMatchesWhatDoesNotAndWhatCannotBeRead) {
    const TemporaryFolder folder;
    const std::string good = folder.write("good", "abc"), bad = folder.write("bad", "abd");
    const std::string missing = folder / "none";
    const std::string sum = sha1_of_abc;
    std::string upper = sum, no_hex = sum;
    std::transform(upper.begin(), upper.end(), upper.begin(), ::toupper);
    no_hex[0] = 'g';
    std::ostringstream lines;
    lines << "# a comment\n\n"
          << upper << "  " << good << "\r\n"
          << sum << " *" << bad << '\n'
          << sum << "  " << missing << '\n'
          << "CRC32 (" << good << ") = 352441c2\n"
          << "CRC16(" << good << ")=0000\n";
    for (const std::string &malformed :
         {sum + " " + good, sum + "0  x", no_hex + "  x", sum + "  ",
          std::string("\\").append(sum) + "  a\\b", "SHA1 (x) " + sum, "MD5 (x) = " + sum})
        lines << malformed << '\n';
    const std::string list = folder.write("list", lines.str());
    const Ran ran = run_kestu({"sum", "--check", list});
    EXPECT_EQ(ran.status, 1);
    EXPECT_THAT(lines_of(ran.out),
                ElementsAre(good + ": OK", bad + ": FAILED", missing + ": FAILED open or read",
                            good + ": OK", good + ": FAILED"));
    EXPECT_THAT(lines_of(ran.err),
                ElementsAre("kestu: " + missing + ": No such file or directory",
                            "kestu: WARNING: 7 lines are improperly formatted",
                            "kestu: WARNING: 1 listed file could not be read",
                            "kestu: WARNING: 2 computed checksums did NOT match"));
    const Ran crcs = run_kestu({"sum", "--check", "--crc32", "--quiet", list});
    EXPECT_EQ(crcs.status, 0);
    EXPECT_EQ(crcs.out, "");
    EXPECT_THAT(crcs.err, HasSubstr("11 lines are improperly formatted"));
}

TEST(Sum, WhatCannotBeReadOrHoldsNoSumsFailsAlone) {
    const TemporaryFolder folder;
    EXPECT_THAT(run_kestu({"sum", "--check", folder.write("list", "nothing\n")}).err,
                HasSubstr("no properly formatted checksum lines found"));
    for (const std::string &path : {folder / "list", folder / "none", folder.path})
        EXPECT_EQ(run_kestu({"sum", "--check", path}).status, 1);
    const std::string good = folder.write("good", "abc");
    const Ran ran = run_kestu({"sum", folder / "none", folder.path, good});
    EXPECT_EQ(ran.status, 1);
    EXPECT_EQ(ran.out, std::string(sha1_of_abc) + "  " + good + "\n");
    EXPECT_THAT(ran.err, AllOf(HasSubstr("none: No such file or directory\n"),
                               HasSubstr(folder.path + ": Is a directory\n")));
}

// No processor is through the large file before anybody could see the bar.
TEST(Sum, ShowsProgressOfLongRunsOnATerminal) {
    const TemporaryFolder folder;
    const std::string large = folder.write("large", ""), small = folder.write("small", "abc");
    fs::resize_file(large, uintmax_t{1} << 40);
    Terminal terminal(200, 5);
    terminal.run({KESTU_PROGRAM, "sum", "--crc32", large});
    terminal.wait_for_text(" %|");
    EXPECT_THAT(terminal.shown(), HasSubstr(large + " [...................."));
    EXPECT_EQ(run_on_terminal("sum --crc32 " + small).out, "352441c2  " + small + "\r\n");
}

TEST(Find, ListsTheFilesThatThePatternsAllow) {
    const TemporaryFolder folder;
    fs::create_directory(folder / "sub");
    for (const char *name : {"a.c", "b.h", "sub/c.c", "sub/D.C"})
        folder.write(name, "");
    const auto listed = [&](std::vector<std::string> options) {
        const Ran ran = run_kestu(with({"find", folder.path}, options));
        EXPECT_EQ(ran.status, 0);
        return lines_of(ran.out);
    };
    EXPECT_THAT(listed({}), UnorderedElementsAre(folder / "a.c", folder / "b.h"));
    EXPECT_THAT(listed({"--recurse", "--include", "*.c"}),
                ElementsAre(folder / "a.c", folder / "sub/c.c"));
    EXPECT_THAT(listed({"-r", "-i", "--include", "*.c;*.h", "--exclude", "*/a.*;*/B.*"}),
                UnorderedElementsAre(folder / "sub/c.c", folder / "sub/D.C"));
}

TEST(Find, EndsPathsWithZeroBytesAndMasksControlCharactersOnATerminal) {
    const TemporaryFolder folder;
    folder.write("a\033[31m\nb", "");
    const std::string name = folder / "a\033[31m\nb";
    EXPECT_EQ(run_kestu({"find", folder.path, "-0"}).out, name + '\0');
    EXPECT_EQ(run_kestu({"find", folder.path}).out, name + "\n");
    EXPECT_EQ(run_on_terminal("find " + folder.path).out, (folder / "a\\x1b[31m\\x0ab") + "\r\n");
}

TEST(Find, ReportsAFolderThatCannotBeOpened) {
    const TemporaryFolder folder;
    const Ran ran = run_kestu({"find", folder / "none"});
    EXPECT_EQ(ran.status, 1);
    EXPECT_THAT(ran.err, AllOf(HasSubstr("Cannot traverse directories."),
                               HasSubstr("/none): No such file or directory")));
    EXPECT_EQ(run_kestu({"find"}).status, 2);
}
