// The signals that an object has.
#include "obj/signals.hpp"

#include "error/error.hpp"
#include "obj/links.hpp"
#include "obj/object.hpp"

using namespace kestu;

namespace kestu {

kestu_error_t *no_such_signal(uint32_t code) {
    return fail(KESTU_ERR_NO_SIGNAL, "Cannot find signal with code %d.", static_cast<int>(code));
}

[[gnu::tls_model("initial-exec")]] constinit thread_local uint64_t emission_round = 0;

void defer(kestu_osig_t &signal, const kestu_osigact_t &action) {
    if (Object *named = object_of(action.destination)) {
        if (named->round != emission_round)
            named->waiting = 0;
        named->round = emission_round;
        ++named->waiting;
    }
    if (!signal.actions)
        utarray_new(signal.actions, &osigact_icd);
    utarray_push_back(signal.actions, &action);
}

void drop_action(const kestu_osig_t &signal, unsigned index) {
    const kestu_osigact_t &action = Elements<kestu_osigact_t>(signal.actions).first[index];
    let_go(action.callback, action.user);
    utarray_erase(signal.actions, index, 1);
}

void drop_actions(UT_array *&actions) {
    for (const kestu_osigact_t &action : Elements<kestu_osigact_t>(actions))
        let_go(action.callback, action.user);
    if (actions)
        utarray_free(actions);
    actions = nullptr;
}

} // namespace kestu

UT_icd osig_icd = {sizeof(kestu_osig_t), nullptr, nullptr, osig_dtor};
UT_icd osigact_icd = {sizeof(kestu_osigact_t), nullptr, nullptr, nullptr};

void osig_dtor(void *osig) {
    auto *signal = static_cast<kestu_osig_t *>(osig);
    delete_all_entries(*signal);
    drop_actions(signal->actions);
}

kestu_error_t *kestu_obj_add_signal(kestu_obj_t *obj, uint32_t code) {
    if (find_signal(obj, code))
        return wrap(fail(KESTU_ERR_SIGNAL_EXISTS, "A signal with code %d already exists.",
                         static_cast<int>(code)),
                    "Cannot add signal to object.");
    if (!obj->signals) {
        obj->signals = &object_of(obj)->signal_array;
        utarray_init(obj->signals, &osig_icd);
    }
    const kestu_osig_t signal = {static_cast<int32_t>(code), 0, nullptr, nullptr};
    utarray_push_back(obj->signals, &signal);
    return nullptr;
}

void kestu_obj_remove_signal(kestu_obj_t *obj, uint32_t code) {
    kestu_osig_t *signal = find_signal(obj, code);
    if (!signal)
        return;
    if (is_busy(*signal))
        return defer(*signal, {.kind = KESTU_OSIGACT_REMOVE,
                               .code = code,
                               .source = obj,
                               .destination = nullptr,
                               .user = nullptr,
                               .callback = nullptr});
    const auto index = static_cast<unsigned>(signal - signals_of(obj).begin());
    utarray_erase(obj->signals, index, 1);
}

kestu_error_t *kestu_obj_set_signal_flags(kestu_obj_t *obj, uint32_t code, uint32_t flags) {
    kestu_osig_t *signal = find_signal(obj, code);
    if (!signal)
        return wrap(no_such_signal(code), "Cannot set signal flags.");
    signal->flags = static_cast<uint16_t>(signal->flags | flags);
    return nullptr;
}
