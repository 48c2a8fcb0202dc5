// The page that `kestu cpu` prints.
#include "cpu/cpu.hpp"

#include "common/text.hpp"

namespace program {
namespace {

// Words in lines of at most `width` columns, the later ones indented to the margin.
std::string wrapped(const std::vector<std::string> &words, size_t width) {
    std::string result;
    size_t column = page_margin;
    for (const std::string &word : words) {
        if (column > page_margin && column + 1 + word.size() > width) {
            result += "\n" + std::string(page_margin, ' ');
            column = page_margin;
        }
        if (column > page_margin) {
            result += ' ';
            ++column;
        }
        result += word;
        column += word.size();
    }
    return result;
}

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
    if (id.amd.physical_bits > 0)
        add_field(
            page, "Addresses",
            text("%u bits physical, %u bits linear", id.amd.physical_bits, id.amd.linear_bits));
    if (cpu.record.thread_count > 0)
        add_field(page, "Processors", counts(cpu.record));
    for (const kestu_cpu_processor_t &p : std::span(cpu.record.processors, cpu.record.thread_count))
        if (p.mhz > 0.0)
            add_field(page, "Clock", text("%'.1f MHz, measured on processor %u", p.mhz, p.index));
}

void add_features(std::string &page, const kestu_cpu_id_t &id, const Look &look) {
    page += "\nFeatures\n";
    for (const FeatureGroup &group : features_of(id))
        if (!group.features.empty())
            add_field(page, group.name.c_str(),
                      wrapped(group.features, static_cast<size_t>(look.width)));
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
    add_features(page, cpu.record.id, look);
    add_caches(page, cpu.record);
    if (cpu.record.thread_count > 0)
        page.append("\n").append(draw_topology(cpu.record, look));
    return page;
}

} // namespace program
