// The tables of names.
#include "machine/cpu_intel_names.hpp"

#include <iterator>

namespace kestu {
namespace {

constexpr const char *celeron = "Intel(R) Celeron(R) processor";
constexpr const char *mobile_celeron = "Mobile Intel(R) Celeron(R) processor";
constexpr const char *pentium3 = "Intel(R) Pentium(R) III processor";
constexpr const char *pentium4 = "Intel(R) Pentium(R) 4 processor";
constexpr const char *xeon = "Intel(R) Xeon(TM) processor";
constexpr const char *mobile_genuine = "Mobile Genuine Intel(R) processor";

// Steppings of the first Pentium 4 that changed the meaning of a brand index.
constexpr uint32_t pentium4_b2 = 0xF12;
constexpr uint32_t pentium4_c1 = 0xF13;

const char *name_by_brand(uint32_t index, uint32_t signature) {
    switch (index) {
    case 1:
    case 10:
    case 20:
        return celeron;
    case 2:
    case 4:
        return pentium3;
    case 3:
        return signature == 0x6B1 ? celeron : "Intel(R) Pentium(R) III Xeon(TM) processor";
    case 6:
        return "Mobile Intel(R) Pentium(R) III Processor-M";
    case 7:
    case 15:
    case 19:
    case 23:
        return mobile_celeron;
    case 8:
        return signature > pentium4_b2 ? "Intel(R) Genuine processor" : pentium4;
    case 9:
        return pentium4;
    case 11:
        return signature < pentium4_c1 ? "Intel(R) Xeon(TM) processor MP" : xeon;
    case 12:
        return "Intel(R) Xeon(TM) Processor MP";
    case 14:
        return signature > pentium4_b2 ? "Mobile Intel(R) Pentium(R) 4 Processor-M" : xeon;
    case 17:
    case 21:
        return mobile_genuine;
    case 18:
        return "Intel(R) Celeron(R) M processor";
    case 22:
        return "Intel(R) Pentium(R) M processor";
    default:
        return nullptr;
    }
}

constexpr const char *names_486[] = {
    "Intel486(TM) DX processor", "Intel486(TM) DX processor", "Intel486(TM) SX processor",
    "IntelDX2(TM) processor",    "Intel486(TM) processor",    "IntelSX2(TM) processor",
    "Intel486(TM) processor",    "IntelDX2WB processor",      "IntelDX4(TM) processor",
};

const char *name_of_family_4(uint32_t model) {
    return model < std::size(names_486) ? names_486[model] : "Intel486(TM) processor";
}

const char *name_of_family_5(uint32_t model) {
    switch (model) {
    case 3:
        return "Intel Pentium(R) OverDrive processor";
    case 4:
        return "Intel Pentium(R) processor with MMX(TM) technology";
    default:
        return "Intel Pentium(R) processor";
    }
}

const char *name_of_family_6(uint32_t model) {
    switch (model) {
    case 1:
        return "Intel Pentium(R) Pro processor";
    case 3:
        return "Intel Pentium(R) II processor";
    case 6:
        return "Intel Celeron processor";
    case 9:
    case 13:
        return "Intel Pentium(R) M processor";
    case 10:
        return "Intel Pentium(R) III Xeon processor";
    case 11:
        return "Intel Pentium(R) III processor";
    default:
        return nullptr;
    }
}

const char *name_by_model(uint32_t family, uint32_t model) {
    switch (family) {
    case 4:
        return name_of_family_4(model);
    case 5:
        return name_of_family_5(model);
    case 6:
        return name_of_family_6(model);
    default:
        return nullptr;
    }
}

} // namespace

const char *intel_name(const kestu_cpu_id_t &id) {
    if (id.brand_index >= 1 && id.brand_index <= 23)
        return name_by_brand(id.brand_index, id.signature);
    return id.signature != 0 ? name_by_model(id.family, id.model) : nullptr;
}

} // namespace kestu
