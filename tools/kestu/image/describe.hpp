// What a picture is and what is measured of it, for people and for programs.
#pragma once

#include "common/json.hpp"
#include "image/counts.hpp"

#include <string>

namespace program {

// A line for each field of a page, for people. Of files that the plain reader takes, what it says
// of the file at `readable` is told, field by field.
std::string page_of(Source &source, const std::string &readable, const Counts &counts);

Json json_of_page(const std::string &name, Source &source, const Counts &counts);

// "254 pixels per inch, 10 pixels per mm"; "not given".
std::string resolution_of(const kestu_img_t &image);

} // namespace program
