// What the values of options may be.
#pragma once

#include "common/parser.hpp"

#include <string>
#include <vector>

namespace program {

// A whole number in decimal digits, from `least` to `most`.
CLI::Validator whole_number(long long least, long long most);

// Any finite number; one above 0; one that is not below 0.
CLI::Validator number();
CLI::Validator positive_number();
CLI::Validator not_negative_number();

// One of some words. As the name of an option's value, they are told by help and completed.
CLI::Validator one_of(const std::vector<std::string> &words);
std::string alternatives(const std::vector<std::string> &words);
std::vector<std::string> words_of(const std::string &alternatives);

} // namespace program
