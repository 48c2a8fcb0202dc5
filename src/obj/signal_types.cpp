// Signal types.
#include "kestu_link.h"

#include "base/kept_errno.hpp"
#include "base/pool_text.hpp"
#include "obj/registry.hpp"

#include <cstring>

using namespace kestu;

namespace {

struct SignalType {
    uint32_t code;
    const char *name; // null for a type without a name
};

SignalType *signal_type(void *data) {
    return static_cast<SignalType *>(data);
}

// A record that was given back, or else a new one.
kestu_error_t *take_record(SignalType **record) {
    if (kestu_cdl_t *ready = kestu_cdl_get_ready(engine.signal_type_list)) {
        *record = signal_type(kestu_cdl_get_data(ready));
        return nullptr;
    }
    *record = static_cast<SignalType *>(apr_palloc(engine.signal_types.pool, sizeof(SignalType)));
    if (!*record)
        return fail(KESTU_ERR_NO_MEMORY);
    **record = {};
    return kestu_cdl_prepend(&engine.signal_type_list, 0, *record, nullptr,
                             engine.signal_types.pool);
}

// Kept: a record that is used again without a name keeps the name it had. Relied on by: programs
// that look it up.
kestu_error_t *add_signal_type(uint32_t code, const char *name) {
    const KeptErrno kept;
    const char *copy = name ? pool_copy(engine.signal_types.pool, name) : nullptr;
    if (name && !copy)
        return fail(KESTU_ERR_NO_MEMORY);
    SignalType *record = nullptr;
    if (kestu_error_t *err = take_record(&record))
        return err;
    record->code = code;
    if (copy)
        record->name = copy;
    return nullptr;
}

} // namespace

kestu_error_t *kestu_objsig_register(uint32_t *code, const char *name) {
    constexpr const char *action = "Cannot register signal.";
    const auto refuse = [=]() -> kestu_error_t * {
        if (!kestu_objsig_query_type(name))
            return nullptr;
        return wrap(
            fail(KESTU_ERR_SIGNAL_TYPE_EXISTS, "Object signal type [%s] already exists.", name),
            action);
    };
    const auto add = [=](uint32_t next) {
        kestu_error_t *err = add_signal_type(next, name);
        if (!err)
            *code = next;
        return err;
    };
    return enrol(engine.signal_types, action, refuse, add);
}

kestu_error_t *kestu_objsig_register_once(uint32_t *code, const char *name) {
    constexpr const char *action = "Cannot register signal.";
    Registry &registry = engine.signal_types;
    if (kestu_error_t *err = lock(registry))
        return wrap(err, action);
    uint32_t found = kestu_objsig_query_type(name);
    if (found == 0) {
        found = registry.next_code;
        if (kestu_error_t *err = add_signal_type(found, name))
            return wrap(unlock_after(registry, err), action);
        ++registry.next_code;
    }
    *code = found;
    unlock(registry, action);
    return nullptr;
}

kestu_error_t *kestu_objsig_deregister(uint32_t code) {
    constexpr const char *action = "Cannot deregister signal.";
    if (kestu_error_t *err = lock(engine.signal_types))
        return wrap(err, action);
    const auto has_code = [](uint32_t, void *data, void *wanted) -> int {
        return signal_type(data)->code == *static_cast<uint32_t *>(wanted);
    };
    kestu_cdl_set_free(kestu_cdl_walk_node_first(engine.signal_type_list, has_code, &code));
    unlock(engine.signal_types, action);
    return nullptr;
}

uint32_t kestu_objsig_query_type(const char *name) {
    const auto has_name = [](uint32_t, void *data, void *wanted) -> void * {
        const char *own = signal_type(data)->name;
        return own && wanted && std::strcmp(own, static_cast<const char *>(wanted)) == 0 ? data
                                                                                         : nullptr;
    };
    const SignalType *found = signal_type(
        kestu_cdl_walk_ptr_first(engine.signal_type_list, has_name, const_cast<char *>(name)));
    return found ? found->code : 0;
}
