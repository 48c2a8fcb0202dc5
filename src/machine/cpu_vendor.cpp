// The table of vendors.
#include "machine/cpu_vendor.hpp"

#include "kestu_cpu.h"

namespace kestu {
namespace {

constexpr Vendor vendors[] = {
    {"GenuineIntel", KESTU_CPU_INTEL, "Intel Corporation", nullptr},
    {"AuthenticAMD", KESTU_CPU_AMD, "Advanced Micro Devices (AMD)", nullptr},
    {"GenuineTMx86", KESTU_CPU_TRANSMETA, "Transmeta", "Transmeta Processor"},
    {"TransmetaCPU", KESTU_CPU_TRANSMETA, "Transmeta", "Transmeta Processor"},
    {"SiS SiS SiS", KESTU_CPU_SIS, "SiS", "SiS Processor"},
    {"RiseRiseRise", KESTU_CPU_RISE, "Rise Technology", "Rise Processor"},
    {"CentaurHauls", KESTU_CPU_CENTAUR, "IDT/Centaur, VIA Inc", "VIA Processor"},
    {"NexGenDriven", KESTU_CPU_NEXGEN, "NexGen", "NexGen Nx586 Processor"},
    {"UMC UMC UMC", KESTU_CPU_UMC, "United Microelectronics Corporation(UMC)",
     "UMC 80486 Processor"},
    {"CyrixInstead", KESTU_CPU_CYRIX, "Cyrix Corporation, VIA Inc", "Cyrix Processor"},
    {"Geode by NSC", KESTU_CPU_NSC, "National Semiconductor", "National Semiconductor Processor"},
};

constexpr Vendor unknown = {"", KESTU_CPU_UNKNOWN, "Unknown", "Unknown Processor"};

} // namespace

const Vendor &find_vendor(std::string_view id) {
    while (id.ends_with(' ')) // an identification of eleven characters is filled up to twelve
        id.remove_suffix(1);
    for (const Vendor &vendor : vendors)
        if (id == vendor.id)
            return vendor;
    return unknown;
}

} // namespace kestu
