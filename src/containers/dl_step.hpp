// Walking several lists in step.
#pragma once

#include "containers/links.hpp"
#include "kestu_dl.h"
#include "kestu_mem.h"

namespace kestu::dl {

// Where the lists of a walk in step stand, and what their nodes carry.
class Cursors {
  public:
    explicit Cursors(uint32_t count) : n_(count) {}
    ~Cursors() {
        kestu_mem_free(nodes_);
        kestu_mem_free(tags_);
        kestu_mem_free(data_);
    }
    Cursors(const Cursors &) = delete;
    Cursors &operator=(const Cursors &) = delete;

    kestu_error_t *start(kestu_dl_t *const *handles) {
        kestu_error_t *err = kestu_mem_malloc(n_ * sizeof *nodes_, &nodes_);
        if (!err)
            err = kestu_mem_malloc(n_ * sizeof *tags_, &tags_);
        if (!err)
            err = kestu_mem_malloc(n_ * sizeof *data_, &data_);
        for (uint32_t i = 0; !err && i < n_; ++i)
            nodes_[i] = first_of(handles[i]);
        return err;
    }

    // False when every list has ended.
    bool read() {
        bool any = false;
        for (uint32_t i = 0; i < n_; ++i) {
            tags_[i] = nodes_[i] ? nodes_[i]->tag : 0;
            data_[i] = nodes_[i] ? nodes_[i]->data : nullptr;
            any = any || nodes_[i];
        }
        return any;
    }

    void advance() {
        for (uint32_t i = 0; i < n_; ++i)
            nodes_[i] = nodes_[i] ? nodes_[i]->next : nullptr;
    }

    const uint32_t *tags() const { return tags_; }
    void *const *data() const { return data_; }

  private:
    const uint32_t n_;
    kestu_dl_t **nodes_ = nullptr;
    uint32_t *tags_ = nullptr;
    void **data_ = nullptr;
};

} // namespace kestu::dl
