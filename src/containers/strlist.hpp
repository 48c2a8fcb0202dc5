// Adding many strings to a list in time linear in them.
#pragma once

#include "kestu_strlist.h"

#include <string_view>

namespace kestu {

// Appends to a list and remembers its end, so that no string is walked over again.
class Appender {
  public:
    Appender(kestu_strlist_t *extended, apr_pool_t *strings_pool, kestu_dl_t *end = nullptr)
        : list_(extended), pool_(strings_pool), last_(end) {}

    // Fails with KESTU_ERR_LIST_INSERTION for a null list, as it does for want of memory.
    [[nodiscard]] kestu_error_t *append(std::string_view text);

    // The last string, null until one is appended.
    kestu_dl_t *last() const { return last_; }

  private:
    kestu_strlist_t *list_;
    apr_pool_t *pool_;
    kestu_dl_t *last_;
};

} // namespace kestu
