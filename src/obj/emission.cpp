// Emission of signals.
#include "obj/emission.hpp"

#include "base/kept_errno.hpp"
#include "error/error.hpp"
#include "obj/links.hpp"
#include "obj/signals.hpp"

#include <cstdlib>

using namespace kestu;

namespace {

// A signal that is being emitted. Its slots may destroy the object: then the emission learns of it
// here, since neither object nor signal can be looked at any more.
struct Emission : Running {
    Emission(const kestu_obj_t *emitting, uint32_t emitted, kestu_error_t **wanted)
        : Running{innermost, wanted}, obj(emitting), code(emitted) {
        innermost = this;
    }
    ~Emission() { innermost = outer; }
    Emission(const Emission &) = delete;
    Emission &operator=(const Emission &) = delete;

    // Null when it is gone.
    kestu_osig_t *signal() const { return obj ? find_signal(obj, code) : nullptr; }

    const kestu_obj_t *obj; // null when it has been abandoned
    uint32_t code;
};

// Calls `use` with the emissions that are under way, the innermost first.
template <typename Use>
void each_emission(Use use) {
    for (Running *at = Running::innermost; at; at = at->outer)
        use(static_cast<Emission &>(*at));
}

// Visits the slots in three rounds, in each in the order of their entries, until `visit` says
// false.
template <typename Visit>
void each_slot(const kestu_odest_t *first, Visit visit) {
    for (unsigned round = 0; round < 3; ++round)
        for (const kestu_odest_t *entry = first; entry; entry = next_entry(entry))
            for (const kestu_oslot_t &slot : slots_of(*entry))
                if (round_of(slot) == round && !visit(Calls::Call{entry->destination, &slot}))
                    return;
}

// Null without memory.
Calls *make_calls(const kestu_odest_t *first) {
    const KeptErrno kept;
    size_t count = 0;
    each_slot(first, [&](Calls::Call) { return ++count; });
    auto *calls = static_cast<Calls *>(std::malloc(sizeof(Calls) + count * sizeof(Calls::Call)));
    if (!calls)
        return nullptr;
    calls->count = 0;
    each_slot(first, [&](Calls::Call call) {
        calls->list[calls->count++] = call;
        return true;
    });
    return calls;
}

// The calls of a signal, by its first entry. Null without memory, and when there is no place to
// keep them.
const Calls *calls_of(kestu_odest_t *first) {
    Entry *keeper = own_entry(first);
    if (keeper && !keeper->calls) [[unlikely]]
        keeper->calls = make_calls(first);
    return keeper ? keeper->calls : nullptr;
}

// Calls the slots until `stops` says true. False when the object or its signals went away
// meanwhile.
//
// Entries, slots and calls stay where they are while the signal is busy; the signal itself may
// move.
template <typename Stops>
bool call_slots(kestu_odest_t *first, kestu_obj_t *obj, uint32_t code, void *argument,
                kestu_error_t **failures, Stops stops) {
    if (!first)
        return true;
    const Calls *calls = calls_of(first);
    Emission emission(obj, code, failures);
    const auto make = [&](const Calls::Call &call) {
        if (call.slot->callback)
            call.slot->callback(obj, code, call.destination, call.slot->user, argument);
        return emission.obj != nullptr && !stops();
    };
    if (!calls) [[unlikely]] {
        each_slot(first, make);
        return emission.obj != nullptr;
    }
    for (const Calls::Call &call : *calls)
        if (!make(call)) [[unlikely]]
            break;
    return emission.obj != nullptr;
}

// Looks for `most` actions at most, from the latest on. Returns how many it has not found.
size_t narrow_actions(const kestu_osig_t &signal, const kestu_obj_t *obj, size_t most) {
    for (unsigned i = signal.actions ? signal.actions->i : 0; i-- > 0 && most > 0;) {
        kestu_osigact_t &action = Elements<kestu_osigact_t>(signal.actions).first[i];
        if (action.destination != obj)
            continue;
        --most;
        if (action.kind == KESTU_OSIGACT_CONNECT)
            drop_action(signal, i);
        else
            action.code = static_cast<uint32_t>(signal.code);
    }
    return most;
}

// Carries one action out and adds its failure to `failures`. False when the emitting signal is
// gone.
bool carry_out(const kestu_osigact_t &action, kestu_obj_t *obj, uint32_t code,
               kestu_error_t *&failures) {
    kestu_error_t *err = nullptr;
    switch (action.kind) {
    case KESTU_OSIGACT_CONNECT:
        err = kestu_obj_connect(action.source, action.code, action.destination, action.callback,
                                action.user);
        if (kestu_link_t *link = err ? link_of(action.callback, action.user) : nullptr)
            link->end(link);
        break;
    case KESTU_OSIGACT_DISCONNECT:
        kestu_obj_disconnect(action.source, action.code, action.destination, action.callback);
        break;
    case KESTU_OSIGACT_REMOVE:
        kestu_obj_remove_signal(action.source, action.code);
        if (action.source == obj && action.code == code)
            return false;
        break;
    default:
        err = fail(KESTU_ERR_SIGNAL_ACTION);
    }
    if (err)
        failures = kestu_error_compose_create(err, failures);
    return true;
}

// Carries out what waited.
//
// Kept: failures are told only when the emitting signal goes. Relied on by: emitters, who do not
// expect errors of what others asked for.
[[gnu::noinline]] kestu_error_t *carry_out_all(UT_array *actions, kestu_obj_t *obj, uint32_t code) {
    kestu_error_t *failures = nullptr;
    bool exists = true;
    for (kestu_osigact_t &action : Elements<kestu_osigact_t>(actions)) {
        if (exists)
            exists = carry_out(action, obj, code, failures);
        else
            let_go(action.callback, action.user);
    }
    utarray_free(actions);
    if (!exists)
        return failures;
    kestu_error_clear(failures);
    return nullptr;
}

template <typename Stops>
kestu_error_t *emit(kestu_obj_t *obj, uint32_t code, void *argument, kestu_error_t **failures,
                    Stops stops) {
    kestu_osig_t *signal = find_signal(obj, code);
    if (!signal)
        return wrap(no_such_signal(code), "Cannot emit signal.");
    if (is_busy(*signal))
        return nullptr;
    signal->flags |= KESTU_OSIG_BUSY;
    if (!call_slots(signal->destinations, obj, code, argument, failures, stops))
        return nullptr;
    signal = find_signal(obj, code);
    signal->flags &= static_cast<uint16_t>(~KESTU_OSIG_BUSY);
    if (!signal->actions)
        return nullptr;
    UT_array *actions = signal->actions;
    signal->actions = nullptr;
    if (!Running::innermost)
        ++emission_round;
    return carry_out_all(actions, obj, code);
}

} // namespace

namespace kestu {

void forget_waiting(const Object &object) {
    size_t most = object.round == emission_round ? object.waiting : 0;
    each_emission([&](const Emission &emission) {
        if (const kestu_osig_t *signal = most > 0 ? emission.signal() : nullptr)
            most = narrow_actions(*signal, &object, most);
    });
}

} // namespace kestu

kestu_error_t *kestu_obj_emit_signal(kestu_obj_t *obj, uint32_t code, void *argument) {
    return emit(obj, code, argument, nullptr, [] { return false; });
}

kestu_error_t *kestu_obj_emit_collect(kestu_obj_t *obj, uint32_t code, void *argument) {
    kestu_error_t *failures = nullptr;
    kestu_error_t *err = emit(obj, code, argument, &failures, [] { return false; });
    return kestu_error_compose_create(err, failures);
}

kestu_error_t *kestu_obj_emit_until_error(kestu_obj_t *obj, uint32_t code, void *argument) {
    kestu_error_t *failure = nullptr;
    kestu_error_t *err = emit(obj, code, argument, &failure, [&] { return failure != nullptr; });
    return kestu_error_compose_create(err, failure);
}

void kestu_obj_delete_signals(kestu_obj_t *obj) {
    each_emission([obj](Emission &emission) {
        if (emission.obj == obj)
            emission.obj = nullptr;
    });
    if (obj->signals)
        utarray_done(obj->signals);
    obj->signals = nullptr;
}
