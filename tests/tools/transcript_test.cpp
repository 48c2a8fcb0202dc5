// Sessions at a shell prompt: what the files in the folder transcripts type, and what they show.
#include "support/process.hpp"
#include "support/test.hpp"

#include <filesystem>
#include <sstream>

using namespace kestu::test;
namespace fs = std::filesystem;

namespace {

const fs::path transcripts = KESTU_TRANSCRIPTS;

class Transcript : public testing::TestWithParam<std::string> {};

std::vector<std::string> all_transcripts() {
    std::vector<std::string> names;
    for (const auto &entry : fs::directory_iterator(transcripts))
        if (entry.path().extension() == ".txt")
            names.push_back(entry.path().stem());
    return names;
}

// What the command shows, and "[status]" when it is not 0.
std::string shown_by(const std::string &command, const std::string &folder) {
    const std::string program = fs::path(KESTU_PROGRAM).parent_path();
    const Ran ran = run(
        {"bash", "-c", "cd " + folder + "; exec 2>&1; " + command}, "",
        {"PATH=" + program + ":" + getenv("PATH"), "LC_ALL=C", "XDG_STATE_HOME=/dev/null/none"});
    const bool ends = ran.out.empty() || ran.out.back() == '\n';
    return ran.out + (ends ? "" : "\n") +
           (ran.status ? "[" + std::to_string(ran.status) + "]\n" : "");
}

} // namespace

INSTANTIATE_TEST_SUITE_P(Of, Transcript, testing::ValuesIn(all_transcripts()),
                         [](const auto &name) { return name.param; });

// A line "$ command" is followed by what it shows; remarks begin with "# ". All run in one folder,
// with copies of what is given. With KESTU_UPDATE_TRANSCRIPTS the file is written anew.
TEST_P(Transcript, ShowsWhatItDid) {
    const TemporaryFolder folder;
    fs::copy(transcripts / "given", folder.path);
    fs::create_directory_symlink(KESTU_CPUID_FOLDER, folder / "machines");
    fs::create_directory_symlink(KESTU_PICTURES_FOLDER, folder / "pictures");
    const std::string path = transcripts / (GetParam() + ".txt"), expected = read_file(path);
    std::istringstream lines(expected);
    std::string shown;
    for (std::string line, before; std::getline(lines, line); before = line)
        if (line.starts_with("# "))
            shown += (before.empty() && !shown.empty() ? "\n" : "") + line + "\n";
        else if (line.starts_with("$ "))
            shown += line + "\n" + shown_by(line.substr(2), folder.path);
    EXPECT_EQ(shown, expected);
    if (getenv("KESTU_UPDATE_TRANSCRIPTS"))
        fs::copy_file(folder.write("shown", shown), path, fs::copy_options::overwrite_existing);
}
