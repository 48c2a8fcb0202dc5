// Who made a processor.
#pragma once

#include <cstdint>
#include <string_view>

namespace kestu {

struct Vendor {
    const char *id;
    uint32_t code;
    const char *name;
    const char *processor; // null where the processor's own name is derived
};

// The vendor that identifies itself by `id`; the unknown one when nobody is known by it.
const Vendor &find_vendor(std::string_view id);

} // namespace kestu
