// JSON that the program prints.
#pragma once

#include <nlohmann/json.hpp>

#include <string>

namespace program {

using Json = nlohmann::ordered_json;

// As a document of its own. Texts come from processors, files and their names: what is not UTF-8 in
// them stands as the replacement character.
inline std::string document(const Json &json) {
    return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

// The same in one line, of which many make a stream.
inline std::string json_line(const Json &json) {
    return json.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

} // namespace program
