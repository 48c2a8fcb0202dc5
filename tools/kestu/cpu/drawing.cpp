// The drawing of packages, caches, cores and threads: boxes in boxes.
#include "common/boxes.hpp"
#include "cpu/cpu.hpp"

#include "common/text.hpp"

#include <algorithm>
#include <map>
#include <utility>

namespace program {
namespace {

using Processors = std::vector<const kestu_cpu_processor_t *>;

// With more cores than these the boxes leave the caches out that belong to one core.
constexpr uint32_t max_detailed_cores = 16;

// Boxes in boxes do not get narrower.
constexpr size_t min_width = 20;

// The outermost level that a cache can have.
constexpr uint32_t top_level = 7;

// The columns that a frame leaves of `width`, for content that is never asked to be narrower.
size_t inside(size_t width) {
    return std::max(width, min_width + 4) - 4;
}

// The processors in groups with the same key, each in the order in which they were.
template <typename Key>
std::vector<Processors> group_by(const Processors &all, Key key) {
    std::map<decltype(key(*all[0])), Processors> groups;
    for (const kestu_cpu_processor_t *p : all)
        groups[key(*p)].push_back(p);
    std::vector<Processors> result;
    result.reserve(groups.size());
    for (auto &[value, group] : groups)
        result.push_back(std::move(group));
    return result;
}

std::vector<Processors> cores_of(const Processors &all) {
    return group_by(all, [](const kestu_cpu_processor_t &p) { return p.core; });
}

bool is_one_core(const Processors &all) {
    return std::all_of(all.begin(), all.end(), [&](const kestu_cpu_processor_t *p) {
        return p->package == all[0]->package && p->core == all[0]->core;
    });
}

class Drawing {
  public:
    Drawing(const kestu_cpu_t &record, const Look &look) : cpu_(record), boxes_(look.unicode) {}

    Block draw_all(const Processors &all, size_t width) const {
        std::vector<Block> packages;
        const auto package = [](const kestu_cpu_processor_t &p) { return p.package; };
        for (const Processors &group : group_by(all, package)) {
            const std::string title = text("Package %u", group[0]->package);
            packages.push_back(boxes_.framed({title}, draw(group, top_level, 0, inside(width))));
        }
        return boxes_.beside(packages, width);
    }

  private:
    // Bit k stands for cache kind k.
    using Kinds = uint32_t;

    bool shares(const Processors &all, uint32_t kind) const {
        return std::all_of(all.begin(), all.end(), [&](const kestu_cpu_processor_t *p) {
            return p->cache[kind] != KESTU_CPU_NO_CACHE && p->cache[kind] == all[0]->cache[kind];
        });
    }

    // The kinds of a level, or of all levels up to it, of which the processors share one cache.
    Kinds shared_kinds(const Processors &all, uint32_t lowest, uint32_t highest) const {
        Kinds kinds = 0;
        for (uint32_t kind = 0; kind < cpu_.cache_count; ++kind) {
            const uint32_t level = cpu_.caches[kind].level;
            if (level >= lowest && level <= highest && shares(all, kind))
                kinds |= 1u << kind;
        }
        return kinds;
    }

    std::vector<std::string> names(Kinds kinds) const {
        std::vector<std::string> lines;
        for (uint32_t kind = cpu_.cache_count; kind-- > 0;)
            if (kinds >> kind & 1)
                lines.push_back(std::string(cpu_.caches[kind].label) + " " +
                                cache_size(cpu_.caches[kind]));
        return lines;
    }

    Block draw_core(const Processors &core, Kinds drawn) const {
        std::vector<std::string> lines;
        if (cpu_.core_count <= max_detailed_cores)
            lines = names(shared_kinds(core, 0, top_level) & ~drawn);
        std::string threads;
        for (const kestu_cpu_processor_t *p : core)
            threads += text(threads.empty() ? "%u" : " %u", p->index);
        lines.push_back(threads);
        return boxes_.framed(lines, {});
    }

    // The cache of a level and type that the processor has: its kind and its identifier.
    std::pair<uint32_t, uint32_t> cache_of(const kestu_cpu_processor_t &p, uint32_t level,
                                           uint32_t type) const {
        for (uint32_t kind = 0; kind < cpu_.cache_count; ++kind)
            if (cpu_.caches[kind].level == level && cpu_.caches[kind].type == type &&
                p.cache[kind] != KESTU_CPU_NO_CACHE)
                return {kind, p.cache[kind]};
        return {cpu_.cache_count, KESTU_CPU_NO_CACHE};
    }

    // Processors in groups that share caches of the level; the type that is shared most widely
    // decides. One group when there are no caches of the level.
    std::vector<Processors> split(const Processors &all, uint32_t level) const {
        std::vector<Processors> widest;
        for (const kestu_cpu_cache_t &cache : std::span(cpu_.caches, cpu_.cache_count)) {
            if (cache.level != level)
                continue;
            auto groups = group_by(all, [&](const kestu_cpu_processor_t &p) {
                return cache_of(p, level, cache.type);
            });
            if (widest.empty() || groups.size() < widest.size())
                widest = std::move(groups);
        }
        if (widest.empty())
            widest.push_back(all);
        return widest;
    }

    Block draw(const Processors &all, uint32_t level, Kinds drawn, size_t width) const {
        std::vector<Block> blocks;
        if (level == 0) {
            for (const Processors &core : cores_of(all))
                blocks.push_back(draw_core(core, drawn));
            return boxes_.beside(blocks, width);
        }
        for (const Processors &group : split(all, level)) {
            const Kinds shared = shared_kinds(group, level, level) & ~drawn;
            if (is_one_core(group))
                blocks.push_back(draw_core(group, drawn));
            else if (shared == 0)
                blocks.push_back(draw(group, level - 1, drawn, width));
            else
                blocks.push_back(boxes_.framed(
                    names(shared), draw(group, level - 1, drawn | shared, inside(width))));
        }
        return boxes_.beside(blocks, width);
    }

    const kestu_cpu_t &cpu_;
    Boxes boxes_;
};

} // namespace

std::string topology_legend(const kestu_cpu_t &cpu) {
    return cpu.core_count <= max_detailed_cores
               ? "Each innermost box is a core: its own caches, and the numbers of its threads.\n"
               : "Each innermost box is a core, with the numbers of its threads.\n";
}

std::string draw_topology(const kestu_cpu_t &cpu, const Look &look) {
    Processors all;
    for (const kestu_cpu_processor_t &p : std::span(cpu.processors, cpu.thread_count))
        all.push_back(&p);
    const auto width = static_cast<size_t>(std::max(look.width, 0));
    return to_text(Drawing(cpu, look).draw_all(all, width));
}

} // namespace program
