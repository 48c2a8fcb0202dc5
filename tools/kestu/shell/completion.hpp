// Completion of what is typed.
#pragma once

#include "kestu_edit.h"

#include <string>

namespace program {

class Shell;

// Proposes what may stand at the end of `front`: commands, options and values as the parser knows
// them, and files.
void complete(kestu_edit_proposals_t *proposals, const std::string &front, const Shell &shell);

} // namespace program
