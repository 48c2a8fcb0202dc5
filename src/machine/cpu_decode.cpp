// The way from one processor to the record.
#include "machine/cpu_decode.hpp"

namespace kestu {

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
