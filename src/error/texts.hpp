// Where the texts of registered codes stand.
#pragma once

namespace kestu {

// The place of a code that was handed out, or null.
const char **registered_slot(int code);

} // namespace kestu
