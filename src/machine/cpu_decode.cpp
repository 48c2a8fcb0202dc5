// What the vendors' rules share, and the way from one processor to the record.
#include "machine/cpu_decode.hpp"

namespace kestu {

void decode_signature(const Leaf &leaf1, kestu_cpu_id_t &id) {
    id.stepping = bits(leaf1.eax, 0, 3);
    id.model = bits(leaf1.eax, 4, 7);
    id.family = bits(leaf1.eax, 8, 11);
    id.type = bits(leaf1.eax, 12, 13);
    id.extended_model = bits(leaf1.eax, 16, 19);
    id.extended_family = bits(leaf1.eax, 20, 27);
    id.signature = leaf1.eax;
    id.display_family = id.family + id.extended_family;
    id.display_model = id.model + (id.extended_model << 4);
    id.brand_index = bits(leaf1.ebx, 0, 7);
    id.logical_processors = bits(leaf1.ebx, 16, 23);
    id.initial_apic_id = bits(leaf1.ebx, 24, 31);
}

kestu_error_t *read_processor(const Rules &rules, Processor &processor) {
    processor = {};
    return rules.decode(running_processor(), processor);
}

void store_processor(const Rules &rules, const Processor &processor, kestu_cpu_t &record) {
    record.id = processor.id;
    rules.name(running_processor(), processor.id, record.name);
    record.cache_count = processor.cache_count;
    for (uint32_t i = 0; i < processor.cache_count; ++i)
        store_cache(processor.caches[i], record.caches[i]);
}

} // namespace kestu

using namespace kestu;

int kestu_cpu_amd_func(kestu_cpu_t *record) {
    Processor processor;
    kestu_error_clear(read_processor(amd_rules, processor));
    store_processor(amd_rules, processor, *record);
    return 0;
}

kestu_error_t *kestu_cpu_intel_func(kestu_cpu_t *record) {
    Processor processor;
    kestu_error_t *err = read_processor(intel_rules, processor);
    store_processor(intel_rules, processor, *record);
    return err;
}
