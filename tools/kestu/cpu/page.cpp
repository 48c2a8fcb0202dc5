// The page that `kestu cpu` prints.
#include "cpu/cpu.hpp"

#include "common/fitted.hpp"
#include "common/text.hpp"

namespace program {
namespace {

// Names without the blanks that processors pad them with.
std::string tidy(const char *name) {
    std::string result;
    for (; *name; ++name)
        if (*name != ' ' || (!result.empty() && result.back() != ' '))
            result += *name;
    while (!result.empty() && result.back() == ' ')
        result.pop_back();
    return printable(result.c_str());
}

std::string title(const kestu_cpu_t &cpu) {
    const std::string name = tidy(cpu.name);
    return name.empty() ? "A processor that does not tell its name" : name;
}

std::string leaves(const kestu_cpu_id_t &id) {
    std::string range = text("0 to %#x", id.highest_leaf);
    if (id.highest_extended_leaf >= 0x80000000)
        range += text(", 0x80000000 to %#x", id.highest_extended_leaf);
    return range;
}

std::string counts(const kestu_cpu_t &cpu) {
    return counted(cpu.package_count, "package") + ", " + counted(cpu.core_count, "core") + ", " +
           counted(cpu.thread_count, "thread");
}

void add_identity(std::string &page, const Cpu &cpu) {
    const kestu_cpu_id_t &id = cpu.record.id;
    add_field(page, "Vendor",
              text("%s (\"%s\")", cpu.record.vendor_name, printable(cpu.record.vendor_id).c_str()));
    if (!cpu.brand.empty())
        add_field(page, "Brand", tidy(cpu.brand.c_str()));
    add_field(page, "Signature",
              text("0x%08x: family %u, model %u, stepping %u", id.signature, id.display_family,
                   id.display_model, id.stepping));
    add_field(page, "Leaves", leaves(id));
    if (cpu.physical_bits > 0)
        add_field(page, "Addresses",
                  text("%u bits physical, %u bits linear", cpu.physical_bits, cpu.linear_bits));
    if (cpu.record.thread_count > 0)
        add_field(page, "Processors", counts(cpu.record));
    if (cpu.left_out > 0)
        add_field(page, "Left out",
                  text("%s, switched off or closed to this process",
                       counted(static_cast<unsigned>(cpu.left_out), "processor").c_str()));
    if (!cpu.hypervisor.empty())
        add_field(page, "Hypervisor", printable(cpu.hypervisor.c_str()));
    if (cpu.base_mhz > 0)
        add_field(
            page, "Rates",
            text("%'u MHz, up to %'u MHz; bus %'u MHz", cpu.base_mhz, cpu.max_mhz, cpu.bus_mhz));
    if (cpu.counter_mhz > 0)
        add_field(page, "Counter", text("%'.1f MHz", cpu.counter_mhz));
    for (const kestu_cpu_processor_t &p : std::span(cpu.record.processors, cpu.record.thread_count))
        if (p.mhz > 0.0)
            add_field(page, "Clock", text("%'.1f MHz, measured on processor %u", p.mhz, p.index));
}

void add_words(std::string &page, const char *field, const std::vector<std::string> &words) {
    std::string line;
    for (const std::string &word : words)
        line.append(line.empty() ? "" : " ").append(word);
    if (!line.empty())
        add_field(page, field, line);
}

void add_features(std::string &page, const kestu_cpu_features_t &features) {
    page += "\nFeatures\n";
    for (const FeatureGroup &group : groups_of(features))
        add_words(page, group.name.c_str(), group.features);
    add_words(page, "Not to be used here", unusable(features));
}

void add_nodes(std::string &page, const std::vector<Named> &nodes) {
    if (!nodes.empty())
        page += "\nNodes of memory\n";
    for (const Named &node : nodes)
        add_field(page, ("Node " + node.name).c_str(), "processors " + node.value);
}

void add_vulnerabilities(std::string &page, const std::vector<Named> &all) {
    if (!all.empty())
        page += "\nVulnerabilities\n";
    std::vector<std::string> others;
    for (const Named &one : all)
        if (one.value == "Not affected")
            others.push_back(one.name);
        else
            add_field(page, one.name.c_str(), one.value);
    add_words(page, "Not affected", others);
}

void add_caches(std::string &page, const kestu_cpu_t &cpu) {
    if (cpu.cache_count == 0)
        return;
    page += "\nCaches\n";
    for (const kestu_cpu_cache_t &cache : std::span(cpu.caches, cpu.cache_count))
        page += text("  %-4s %-11s %5u x %-7s %4u ways  %6u sets  %3u-byte lines\n", cache.label,
                     cache_type(cache), cache.count, cache_size(cache).c_str(), cache.ways,
                     cache.sets, cache.line);
}

} // namespace

const char *cache_type(const kestu_cpu_cache_t &cache) {
    switch (cache.type) {
    case KESTU_CPU_CACHE_DATA:
        return "data";
    case KESTU_CPU_CACHE_INSTRUCTION:
        return "instruction";
    case KESTU_CPU_CACHE_UNIFIED:
        return "unified";
    default:
        return "undefined";
    }
}

std::string cache_size(const kestu_cpu_cache_t &cache) {
    if (cache.size_kb >= 1024 && cache.size_kb % 256 == 0)
        return text("%g MB", cache.size_kb / 1024.0);
    return text("%u KB", cache.size_kb);
}

std::string cpu_page(const Cpu &cpu, const Look &look) {
    std::string page = title(cpu.record) + "\n";
    add_identity(page, cpu);
    add_features(page, cpu.features);
    add_caches(page, cpu.record);
    add_nodes(page, cpu.nodes);
    add_vulnerabilities(page, cpu.vulnerabilities);
    if (cpu.record.thread_count > 0)
        page += "\n" + topology_legend(cpu.record);
    page = fitted(page, look.width);
    if (cpu.record.thread_count > 0)
        page += "\n" + draw_topology(cpu.record, look);
    return page;
}

} // namespace program
