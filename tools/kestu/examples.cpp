#include "examples.hpp"

#include <string_view>

namespace program {
namespace {

struct Example {
    std::string_view command; // that it belongs to
    const char *typed;
    const char *effect;
};

constexpr Example examples[] = {
    {"kestu", "kestu help image draw", "Print the help of a command."},
    {"kestu", "kestu image info scan.tif", "Describe an image."},
    {"kestu", "kestu sum --check sums", "Compare files with a list of sums."},
    {"kestu image", "kestu image stats *.tif", "Measure images, a row for each."},
    {"kestu image", "kestu image draw circle 64 64 40 circle.tif", "Make a picture of a circle."},
    {"kestu image info", "kestu image info scan.tif", "Describe a file."},
    {"kestu image info", "ssh lab cat scan.tif | kestu image info -",
     "Describe what a pipe brings."},
    {"kestu image histogram", "kestu image histogram --log scan.tif",
     "Plot the levels so that rare ones show."},
    {"kestu image histogram", "kestu image histogram --svg plot.svg scan.tif",
     "Write the plot as a picture."},
    {"kestu image histogram", "kestu image histogram --csv scan.tif > levels.csv",
     "Write the counts for a spreadsheet."},
    {"kestu image stats", "kestu image stats *.tif", "Print a table."},
    {"kestu image stats",
     "find scans -name '*.tif' -print0 | kestu image stats --files-from - -0 --json-lines",
     "Measure all scans below a folder, a line of JSON for each."},
    {"kestu image show", "kestu image show --region 100,50,200,150 scan.tif",
     "Show a part of a picture, as large as the terminal."},
    {"kestu image compare", "kestu image compare --out differences.png a.tif b.tif",
     "Tell how far two pictures differ, and make a picture of it."},
    {"kestu image convert", "kestu image convert scan.tif scan.png", "Make a PNG file."},
    {"kestu image convert", "kestu image convert --to archive --compress deflate *.tif",
     "Compress pictures into a folder."},
    {"kestu image stats", "kestu image stats --json *.tif | jq '.[].entropy'",
     "Pick one measure of each."},
    {"kestu image density", "kestu image density scan.tif density.tif",
     "Write densities, and tell what black and white stand for."},
    {"kestu image density", "kestu image density --saturated 3 scan.tif density.tif",
     "Take 3 as the density of pixels that are saturated."},
    {"kestu image fuji", "kestu image fuji plate.tif intensity.tif",
     "Take the usual settings of the scanner."},
    {"kestu image fuji",
     "kestu image fuji --resolution 50 --sensitivity 1000 --latitude 4 plate.tif intensity.tif",
     "Tell how the plate was scanned."},
    {"kestu image mask", "kestu image mask scan.tif mask.tif", "Write the mask into a file."},
    {"kestu image mask", "kestu image mask scan.tif - | kestu image stats -",
     "Hand the mask to another command."},
    {"kestu image draw", "kestu image draw circle 64 64 40 circle.tif", "Draw on a black picture."},
    {"kestu image draw", "kestu image draw ellipse --on scan.tif --width 3 90 60 40 20 marked.tif",
     "Draw with a broad line on a copy of an image."},
    {"kestu image draw circle", "kestu image draw circle 64 64 40 circle.tif",
     "Draw a plain circle."},
    {"kestu image draw circle", "kestu image draw circle --aa --on scan.tif 64 64 40 marked.tif",
     "Draw a smooth one on a copy of an image."},
    {"kestu image draw ellipse", "kestu image draw ellipse 90 60 40 20 ellipse.tif",
     "Draw a plain ellipse."},
    {"kestu image draw ellipse",
     "kestu image draw ellipse --width 2.5 --size 180x120 90 60 40 20 ellipse.tif",
     "Draw a smooth one with a line of 2.5 pixels."},
    {"kestu image draw ellipser", "kestu image draw ellipser 10 10 90 60 ellipse.tif",
     "Draw an ellipse from corner to corner."},
    {"kestu image draw ellipser",
     "kestu image draw ellipser --aa --level 128 10 10 90 60 ellipse.tif",
     "Draw a smooth one in gray."},
    {"kestu cpu", "kestu cpu", "Describe this machine's processor."},
    {"kestu cpu", "kestu cpu --json | jq .caches", "Pick a part for a program."},
    {"kestu host", "kestu host", "Describe this machine."},
    {"kestu host", "kestu host --json | jq .memory_mib", "Pick a part for a program."},
    {"kestu sum", "kestu sum *.tif > sums", "Make a list of sums."},
    {"kestu sum", "kestu sum --check sums", "Compare the files with it later."},
    {"kestu sum", "curl -s example.org/a.tif | kestu sum --crc32", "Sum what a pipe brings."},
    {"kestu find", "kestu find -r --include '*.tif' scans", "List the images below a folder."},
    {"kestu find", "kestu find -r -S +10M --changed-within 2w",
     "List what is large and new below this folder."},
    {"kestu find", "kestu find -r --include '*.tif' -x gzip -k {}", "Run a program for each."},
    {"kestu escape", "kestu escape \"$(cat name)\"", "Show what a text holds."},
    {"kestu escape", "head -c 16 scan.tif | kestu escape", "Show the first bytes of a file."},
    {"kestu unescape", "kestu unescape 'a\\tb\\n'", "Write a tab and a line end."},
    {"kestu unescape", "kestu unescape --utf8 'caf\\u00e9'", "Write an accented letter."},
    {"kestu unescape", "kestu escape < file | kestu unescape > copy", "Go there and back."},
    {"kestu base", "kestu base 16 255 4096", "Write numbers in hexadecimal digits."},
    {"kestu base", "kestu base 10 0xff 0b101", "Read numbers with prefixes."},
    {"kestu base", "kestu base 62 --from 16 - < numbers", "Convert the numbers in a file."},
    {"kestu shell", "kestu shell", "Type commands at a prompt."},
    {"kestu shell", "kestu shell < commands", "Run the commands in a file."},
    {"kestu completion", "eval \"$(kestu completion bash)\"", "Complete words in this shell."},
    {"kestu completion", "kestu completion zsh > _kestu", "Make the file for a folder of fpath."},
    {"kestu help", "kestu help", "List the commands."},
    {"kestu help", "kestu help image info", "Print the help of a command."},
};

} // namespace

std::string examples_of(const std::string &command) {
    std::string footer;
    for (const Example &example : examples)
        if (example.command == command)
            footer += std::string("$ ") + example.typed + "\n" + example.effect + "\n";
    return footer;
}

} // namespace program
