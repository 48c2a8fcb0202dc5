// The processor as JSON.
#include "cpu/cpu.hpp"

#include "common/json.hpp"

namespace program {
namespace {

Json features_json(const kestu_cpu_features_t &features) {
    Json names = Json::array();
    for (const FeatureGroup &group : groups_of(features))
        for (const std::string &name : group.features)
            names.push_back(name);
    return names;
}

Json named_json(const std::vector<Named> &all) {
    Json named = Json::object();
    for (const Named &one : all)
        named[one.name] = one.value;
    return named;
}

Json caches_json(const kestu_cpu_t &cpu) {
    Json caches = Json::array();
    for (const kestu_cpu_cache_t &cache : std::span(cpu.caches, cpu.cache_count))
        caches.push_back({{"level", cache.level},
                          {"type", cache_type(cache)},
                          {"size_kb", cache.size_kb},
                          {"line", cache.line},
                          {"ways", cache.ways},
                          {"sets", cache.sets},
                          {"shared_by", cache.shared_by},
                          {"count", cache.count}});
    return caches;
}

Json processors_json(const kestu_cpu_t &cpu) {
    Json processors = Json::array();
    for (const kestu_cpu_processor_t &p : std::span(cpu.processors, cpu.thread_count)) {
        processors.push_back({{"index", p.index},
                              {"apic_id", p.apic_id},
                              {"package", p.package},
                              {"core", p.core},
                              {"thread", p.thread}});
        if (p.mhz > 0.0)
            processors.back()["mhz"] = p.mhz;
    }
    return processors;
}

// What is not known is left out.
void add_more(Json &json, const Cpu &cpu) {
    if (const auto names = unusable(cpu.features); !names.empty())
        json["unusable_features"] = names;
    if (cpu.left_out > 0)
        json["left_out"] = cpu.left_out;
    if (!cpu.hypervisor.empty())
        json["hypervisor"] = cpu.hypervisor;
    if (cpu.physical_bits > 0)
        json["address_bits"] = {{"physical", cpu.physical_bits}, {"linear", cpu.linear_bits}};
    if (cpu.base_mhz > 0)
        json["mhz"] = {{"base", cpu.base_mhz}, {"max", cpu.max_mhz}, {"bus", cpu.bus_mhz}};
    if (cpu.counter_mhz > 0)
        json["counter_mhz"] = cpu.counter_mhz;
    if (!cpu.nodes.empty())
        json["nodes"] = named_json(cpu.nodes);
    if (!cpu.vulnerabilities.empty())
        json["vulnerabilities"] = named_json(cpu.vulnerabilities);
}

} // namespace

std::string cpu_json(const Cpu &cpu) {
    const kestu_cpu_t &record = cpu.record;
    Json json = {{"vendor_id", record.vendor_id},    {"vendor", record.vendor_name},
                 {"vendor_code", record.vendor},     {"name", record.name},
                 {"signature", record.id.signature}, {"family", record.id.display_family},
                 {"model", record.id.display_model}, {"stepping", record.id.stepping},
                 {"packages", record.package_count}, {"cores", record.core_count},
                 {"threads", record.thread_count},   {"features", features_json(cpu.features)},
                 {"caches", caches_json(record)},    {"processors", processors_json(record)}};
    if (!cpu.brand.empty())
        json["brand"] = cpu.brand;
    add_more(json, cpu);
    return document(json);
}

} // namespace program
