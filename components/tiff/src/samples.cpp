#include "samples.hpp"

#include "unpack.hpp"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace kestu::tiff {
namespace {

// Palettes of old files hold 8 bits where 16 should be.
bool holds_bytes(const Page &page, uint32_t entries) {
    for (const uint16_t *colours : page.map)
        if (std::any_of(colours, colours + entries, [](uint16_t c) { return c > 255; }))
            return false;
    return true;
}

uint64_t luma(uint64_t red, uint64_t green, uint64_t blue) {
    return (299 * red + 587 * green + 114 * blue + 500) / 1000;
}

template <typename Number>
void store_scaled(const uint32_t *values, uint32_t count, double scale, Number *out) {
    for (uint32_t c = 0; c < count; ++c)
        out[c] = static_cast<Number>(static_cast<double>(values[c]) * scale + 0.5);
}

template <typename Number>
void store_luma(const uint32_t *red, uint32_t count, double scale, Number *out) {
    const uint32_t *green = red + count;
    const uint32_t *blue = green + count;
    for (uint32_t c = 0; c < count; ++c) // in this order, so that halves stay halves
        out[c] = static_cast<Number>(
            (299.0 * red[c] + 587.0 * green[c] + 114.0 * blue[c]) / 1000 * scale + 0.5);
}

template <typename Number>
void look_up(const uint32_t *values, uint32_t count, const uint16_t *table, Number *out) {
    for (uint32_t c = 0; c < count; ++c)
        out[c] = static_cast<Number>(table[values[c]]);
}

void store_luma_of_bytes(const uint8_t *from, uint64_t step, uint32_t count, uint8_t *out) {
    for (uint32_t c = 0; c < count; ++c, from += step)
        out[c] =
            static_cast<uint8_t>((299U * from[0] + 587U * from[1] + 114U * from[2] + 500) / 1000);
}

} // namespace

double Levels::full_scale() const {
    return page_->info.levels == 8 ? 255 : 65535;
}

kestu_error_t *Levels::open(Page &page) {
    page_ = &page;
    kestu_tiff_info_t &info = page.info;
    floats_ = info.format == SAMPLEFORMAT_IEEEFP && page.colour != Colour::displayed;
    info.factor = 1;
    info.offset = 0;
    if (page.colour == Colour::displayed) {
        copied_ = true;
        return nullptr;
    }
    if (floats_)
        return make_values(sizeof(double));
    const uint64_t largest = (uint64_t{1} << info.bits) - 1;
    if (info.format == SAMPLEFORMAT_INT) {
        sign_ = (largest + 1) / 2;
        info.offset = -static_cast<double>(sign_);
    }
    copied_ = page.colour == Colour::gray && (info.samples == 1 || page.apart()) && sign_ == 0 &&
              (info.bits == 8 || info.bits == 16);
    luma_of_bytes_ = page.colour == Colour::rgb && info.bits == 8 && sign_ == 0 && !page.apart();
    if (page.colour != Colour::palette)
        info.factor = static_cast<double>(largest) / full_scale();
    const bool computed = info.bits > 16 || page.colour == Colour::rgb;
    kestu_error_t *err = copied_ || luma_of_bytes_ ? nullptr : make_values(sizeof(uint32_t));
    return err || copied_ || computed ? err : make_table();
}

kestu_error_t *Levels::make_values(uint64_t bytes) {
    return values_.make(static_cast<uint64_t>(page_->channels) * page_->width * bytes,
                        page_->max_memory);
}

kestu_error_t *Levels::make_table() {
    const auto entries = uint32_t{1} << page_->info.bits;
    if (kestu_error_t *err = table_.make(entries * sizeof(uint16_t), page_->max_memory))
        return err;
    auto *table = reinterpret_cast<uint16_t *>(table_.data());
    const auto full = static_cast<uint64_t>(full_scale());
    const bool is_palette = page_->colour == Colour::palette;
    const uint64_t largest = !is_palette ? entries - 1 : holds_bytes(*page_, entries) ? 255 : 65535;
    for (uint32_t i = 0; i < entries; ++i) {
        const uint64_t value =
            is_palette ? luma(page_->map[0][i], page_->map[1][i], page_->map[2][i]) : i;
        table[i] = static_cast<uint16_t>((value * full + largest / 2) / largest);
    }
    return nullptr;
}

// Puts the luma of three channels in place of the first.
void Levels::mix_floats() {
    const uint32_t width = page_->width;
    auto *values = reinterpret_cast<double *>(values_.data());
    for (uint32_t c = 0; c < width; ++c)
        values[c] = 0.299 * values[c] + 0.587 * values[c + width] + 0.114 * values[c + 2 * width];
}

void Levels::unpack(const RawRow &row) {
    const Page &page = *page_;
    const auto bits = static_cast<unsigned>(page.info.bits);
    for (int channel = 0; channel < page.channels; ++channel) {
        const uint64_t at = static_cast<uint64_t>(channel) * page.width;
        Samples from = {row.planes[0], static_cast<uint64_t>(page.first_channel + channel),
                        static_cast<uint64_t>(page.info.samples), page.width};
        if (page.apart())
            from = {row.planes[channel], 0, 1, page.width};
        if (floats_)
            unpack_floats(from, bits, reinterpret_cast<double *>(values_.data()) + at);
        else
            unpack_integers(from, bits, static_cast<uint32_t>(sign_),
                            reinterpret_cast<uint32_t *>(values_.data()) + at);
    }
    if (floats_ && page.colour == Colour::rgb)
        mix_floats();
}

void Levels::store_integers(const RawRow &row, void *out) {
    const Page &page = *page_;
    unpack(row);
    const auto *values = reinterpret_cast<const uint32_t *>(values_.data());
    const double scale = 1 / page.info.factor;
    if (page.colour == Colour::rgb)
        return page.info.levels == 8
                   ? store_luma(values, page.width, scale, static_cast<uint8_t *>(out))
                   : store_luma(values, page.width, scale, static_cast<uint16_t *>(out));
    if (page.info.bits > 16)
        return store_scaled(values, page.width, scale, static_cast<uint16_t *>(out));
    const auto *table = reinterpret_cast<const uint16_t *>(table_.data());
    if (page.info.levels == 8)
        look_up(values, page.width, table, static_cast<uint8_t *>(out));
    else
        look_up(values, page.width, table, static_cast<uint16_t *>(out));
}

void Levels::store_floats(void *out) const {
    const auto *values = reinterpret_cast<const double *>(values_.data());
    auto *levels = static_cast<uint16_t *>(out);
    const double range = largest_ / 2 - least_ / 2; // which is finite
    for (uint32_t c = 0; c < page_->width; ++c) {
        const double x = values[c];
        if (!(x > least_) || !(range > 0)) // also what is not a number
            levels[c] = 0;
        else if (x >= largest_)
            levels[c] = 65535;
        else
            levels[c] = static_cast<uint16_t>((x / 2 - least_ / 2) / range * 65535 + 0.5);
    }
}

void Levels::convert(const RawRow &row, void *out) {
    if (luma_of_bytes_) {
        store_luma_of_bytes(row.planes[0], static_cast<uint64_t>(page_->info.samples), page_->width,
                            static_cast<uint8_t *>(out));
    } else if (copied_) {
        std::memcpy(out, row.planes[0], page_->width * page_->level_bytes());
    } else if (!floats_) {
        store_integers(row, out);
    } else {
        unpack(row);
        store_floats(out);
    }
}

void Levels::look_at(const RawRow &row) {
    unpack(row);
    const auto *values = reinterpret_cast<const double *>(values_.data());
    for (uint32_t c = 0; c < page_->width; ++c) {
        if (!std::isfinite(values[c]))
            continue;
        least_ = any_ ? std::min(least_, values[c]) : values[c];
        largest_ = any_ ? std::max(largest_, values[c]) : values[c];
        any_ = true;
    }
}

void Levels::stretch(kestu_tiff_info_t &info) {
    info.offset = least_;
    info.factor = largest_ / 65535 - least_ / 65535;
}

} // namespace kestu::tiff
