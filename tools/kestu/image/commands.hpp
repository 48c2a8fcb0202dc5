// The commands below `kestu image`.
#pragma once

#include "program.hpp"

namespace program {

void add_stats(CLI::App &image, Outcome &outcome);
void add_conversions(CLI::App &image, Outcome &outcome); // density, fuji, mask
void add_draw(CLI::App &image, Outcome &outcome);

} // namespace program
