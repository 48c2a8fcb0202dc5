// The commands below `kestu image`, and what several of them take.
#pragma once

#include "program.hpp"

#include <cstdint>

namespace program {

struct PictureOptions;
struct Region;

void add_info(CLI::App &image, Outcome &outcome);
void add_histogram(CLI::App &image, Outcome &outcome);
void add_stats(CLI::App &image, Outcome &outcome);
void add_show(CLI::App &image, Outcome &outcome);
void add_compare(CLI::App &image, Outcome &outcome);
void add_conversions(CLI::App &image, Outcome &outcome); // density, fuji, mask, convert
void add_draw(CLI::App &image, Outcome &outcome);

// --region, --ellipse and --mask.
void add_region_options(CLI::App &command, Region &region);
// --compress, --description and --force.
void add_picture_options(CLI::App &command, PictureOptions &options);
void add_force(CLI::App &command, bool &force);
void add_page_option(CLI::App &command, uint32_t &page, const char *description);

} // namespace program
