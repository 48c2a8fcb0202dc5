// The report of an object's signals.
#include "base/kept_errno.hpp"
#include "obj/connections.hpp"
#include "obj/signals.hpp"

#include <cstdlib>

#include <execinfo.h>

using namespace kestu;

namespace {

void print_slot(const kestu_oslot_t &slot, FILE *stream) {
    void *address = reinterpret_cast<void *>(slot.callback);
    fprintf(stream, "   Slot> usr: %p callback: %p ", slot.user, address);
    if (slot.callback == autodel) {
        fprintf(stream, "(autodel)\n");
        return;
    }
    char **symbols = backtrace_symbols(&address, 1);
    fprintf(stream, "(%s)\n", symbols ? symbols[0] : "undetected");
    std::free(symbols);
}

// While the signal is emitted, a destination that has died keeps its entry, but not its name.
const char *destination_name(kestu_odest_t &entry) {
    const Entry *own = own_entry(&entry);
    return own && !own->known_to ? nullptr : kestu_obj_get_name(entry.destination);
}

void print_destination(kestu_odest_t &entry, FILE *stream) {
    if (!entry.slots)
        return;
    fprintf(stream, "  Destination %s (%p) has %d slots(s).\n", destination_name(entry),
            static_cast<void *>(entry.destination), static_cast<int>(utarray_len(entry.slots)));
    for (const kestu_oslot_t &slot : slots_of(entry))
        print_slot(slot, stream);
}

} // namespace

void kestu_obj_print_signals(kestu_obj_t *obj, FILE *stream) {
    if (!obj->signals)
        return;
    const KeptErrno kept;
    fprintf(stream, "Object %s (%p) has %d signal(s).\n", kestu_obj_get_name(obj),
            static_cast<void *>(obj), static_cast<int>(utarray_len(obj->signals)));
    for (const kestu_osig_t &signal : signals_of(obj)) {
        fprintf(stream, " Signal %d (flags=%u) has %u destination(s).\n", signal.code,
                static_cast<unsigned>(signal.flags), HASH_COUNT(signal.destinations));
        for (kestu_odest_t *entry = signal.destinations; entry; entry = next_entry(entry))
            print_destination(*entry, stream);
    }
}
