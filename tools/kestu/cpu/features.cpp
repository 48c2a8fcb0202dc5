// The features in groups.
#include "cpu/cpu.hpp"

namespace program {
namespace {

constexpr const char *group_names[] = {
    "Instructions",     "Vectors",  "Matrices", "Cryptography",     "Memory",
    "Virtual machines", "Security", "Checks",   "Power and clocks", "System"};

template <typename Visit>
void for_each_present(const kestu_cpu_features_t &features, Visit visit) {
    for (int number = kestu_cpu_feature_next(KESTU_CPU_FEATURE_NONE);
         number != KESTU_CPU_FEATURE_NONE; number = kestu_cpu_feature_next(number))
        if (const int state = kestu_cpu_feature_state(&features, number); state != KESTU_CPU_ABSENT)
            visit(*kestu_cpu_feature_info(number), state);
}

} // namespace

std::vector<FeatureGroup> groups_of(const kestu_cpu_features_t &features) {
    std::vector<FeatureGroup> groups;
    for (const char *name : group_names)
        groups.push_back({name, {}});
    for_each_present(features, [&](const kestu_cpu_feature_info_t &info, int) {
        groups[static_cast<size_t>(info.group)].features.emplace_back(info.name);
    });
    return groups;
}

std::vector<std::string> unusable(const kestu_cpu_features_t &features) {
    std::vector<std::string> names;
    for_each_present(features, [&](const kestu_cpu_feature_info_t &info, int state) {
        if (state != KESTU_CPU_USABLE)
            names.emplace_back(info.name);
    });
    return names;
}

std::string flags(const kestu_cpu_features_t &features) {
    std::string line;
    for_each_present(features, [&](const kestu_cpu_feature_info_t &info, int) {
        if (info.flags)
            line.append(line.empty() ? "" : " ").append(info.flags);
    });
    return line + "\n";
}

} // namespace program
