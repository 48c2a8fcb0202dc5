// Completion of what is typed.
#pragma once

#include "kestu_edit.h"

#include <string>
#include <vector>

namespace program {

// Proposes commands for the first word, and files for the others.
void complete(kestu_edit_proposals_t *proposals, const std::string &front,
              const std::vector<std::string> &commands);

} // namespace program
