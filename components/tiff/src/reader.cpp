#include "reader.hpp"

#include "base/kept_errno.hpp"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace kestu::tiff {
namespace {

constexpr uint64_t default_memory = uint64_t{1} << 32;
constexpr double centimetres_per_inch = 2.54;

// Where the pixel in a row and column of the image stands in the file.
struct Place {
    uint32_t row, column;
};

Place place_of(int orientation, uint32_t row, uint32_t column, uint32_t height, uint32_t width) {
    switch (orientation) {
    case ORIENTATION_TOPRIGHT:
        return {row, width - 1 - column};
    case ORIENTATION_BOTRIGHT:
        return {height - 1 - row, width - 1 - column};
    case ORIENTATION_BOTLEFT:
        return {height - 1 - row, column};
    case ORIENTATION_LEFTTOP:
        return {column, row};
    case ORIENTATION_RIGHTTOP:
        return {height - 1 - column, row};
    case ORIENTATION_RIGHTBOT:
        return {height - 1 - column, width - 1 - row};
    case ORIENTATION_LEFTBOT:
        return {column, width - 1 - row};
    default:
        return {row, column};
    }
}

template <typename Level>
void gather(const kestu_tiff_info_t &info, const Page &page, const uint8_t *all, uint32_t row,
            void *out) {
    const auto *levels = reinterpret_cast<const Level *>(all);
    for (uint32_t c = 0; c < info.width; ++c) {
        const Place at = place_of(info.orientation, row, c, page.height, page.width);
        static_cast<Level *>(out)[c] = levels[uint64_t{at.row} * page.width + at.column];
    }
}

} // namespace

kestu_error_t *Reader::open(const char *path, const kestu_tiff_options_t *options) {
    const kestu_tiff_options_t chosen = options ? *options : kestu_tiff_options_t{};
    page_.max_memory = chosen.max_memory > 0 ? chosen.max_memory : default_memory;
    kestu_error_t *err = handle_.open_to_read(path, page_.max_memory);
    if (err || (err = read_page(handle_, chosen, page_)) || (err = levels_.open(page_)) ||
        (err = bands_.open(handle_, page_)))
        return err;
    std::memcpy(page_.info.warning, handle_.warning(), sizeof page_.info.warning);
    return levels_.stretches() ? stretch() : nullptr;
}

kestu_error_t *Reader::stretch() {
    RawRow raw;
    for (uint32_t r = 0; r < page_.height; ++r) {
        if (kestu_error_t *err = bands_.find(r, raw))
            return err;
        levels_.look_at(raw);
    }
    levels_.stretch(page_.info);
    page_.info.lost = 0;
    return nullptr;
}

kestu_error_t *Reader::stored_row(uint32_t row, void *out) {
    RawRow raw;
    if (kestu_error_t *err = bands_.find(row, raw))
        return err;
    levels_.convert(raw, out);
    return nullptr;
}

kestu_error_t *Reader::load_turned() {
    const uint64_t bytes = page_.width * page_.level_bytes();
    if (kestu_error_t *err = turned_.make(product(bytes, page_.height), page_.max_memory))
        return err;
    for (uint32_t r = 0; r < page_.height; ++r)
        if (kestu_error_t *err = stored_row(r, turned_.data() + r * bytes))
            return err;
    return nullptr;
}

void Reader::turned_row(uint32_t row, void *out) const {
    if (page_.info.levels == 8)
        gather<uint8_t>(page_.info, page_, turned_.data(), row, out);
    else
        gather<uint16_t>(page_.info, page_, turned_.data(), row, out);
}

// Whether rows of the file are rows of levels, in either byte order.
bool Reader::reads_in_place() const {
    const bool has_rows = page_.direct || (page_.info.tiled && page_.colour != Colour::displayed);
    return has_rows && levels_.copies() && page_.info.orientation == 1 && !page_.lenient;
}

kestu_error_t *Reader::read_rows(void *const *rows, uint32_t &count) {
    if (reads_in_place()) {
        kestu_error_t *err = bands_.read_into(next_, rows, count);
        next_ = (next_ + count) % page_.info.height;
        if (err || count > 0)
            return err;
    }
    count = 1;
    return row(rows[0]);
}

kestu_error_t *Reader::row(void *out) {
    const uint32_t row = next_;
    next_ = row + 1 == page_.info.height ? 0 : row + 1;
    if (page_.turned()) {
        kestu_error_t *err = turned_.data() ? nullptr : load_turned();
        if (!err)
            turned_row(row, out);
        return err;
    }
    kestu_error_t *err = stored_row(row, out);
    if (!err && page_.info.orientation == ORIENTATION_TOPRIGHT) {
        if (page_.info.levels == 8)
            std::reverse(static_cast<uint8_t *>(out), static_cast<uint8_t *>(out) + page_.width);
        else
            std::reverse(static_cast<uint16_t *>(out), static_cast<uint16_t *>(out) + page_.width);
    }
    return err;
}

kestu_error_t *Reader::fill(kestu_img_t &img) {
    const kestu_tiff_info_t &info = page_.info;
    img.height = static_cast<int32_t>(info.height);
    img.width = static_cast<int32_t>(info.width);
    img.samples = 1;
    std::fill(std::begin(img.bits), std::end(img.bits), info.levels);
    img.photometric = info.gray;
    img.compression = info.compression;
    img.planar = PLANARCONFIG_CONTIG;
    img.resunit = info.resunit;
    const double per_inch = info.resunit == RESUNIT_INCH         ? 1
                            : info.resunit == RESUNIT_CENTIMETER ? centimetres_per_inch
                                                                 : 0;
    img.xres = info.xres * per_inch;
    img.yres = info.yres * per_inch;
    const char *software = nullptr;
    if (!TIFFGetField(handle_.tiff(), TIFFTAG_SOFTWARE, &software) || !software)
        return nullptr;
    const size_t size = std::strlen(software) + 1;
    kestu_error_t *err = kestu_mem_malloc(size, &img.software);
    if (!err)
        std::memcpy(img.software, software, size);
    return err;
}

} // namespace kestu::tiff

using namespace kestu::tiff;
using kestu::KeptErrno;

struct kestu_tiff_reader_t {
    Reader reader;
};

namespace {

constexpr const char *action = "Cannot read TIFF page.";

// A matrix whose rows are made as they are read, so that claims alone cost little.
template <typename Level>
kestu_error_t *read_rows(Reader &reader, kestu_img_t &img, Level **&rows) {
    const auto height = static_cast<size_t>(img.height);
    if (kestu_error_t *err = kestu_mem_calloc(height, sizeof *rows, &rows))
        return err;
    constexpr size_t most = 256; // rows that are made before they are read
    for (size_t r = 0; r < height;) {
        const size_t made = std::min(most, height - r);
        for (size_t i = 0; i < made; ++i)
            if (kestu_error_t *err = kestu_mem_malloc(reader.row_bytes(), &rows[r + i]))
                return err;
        for (const size_t end = r + made; r < end;) {
            auto count = static_cast<uint32_t>(end - r);
            void *places[most];
            std::copy_n(rows + r, count, places);
            if (kestu_error_t *err = reader.read_rows(places, count))
                return err;
            r += count;
        }
    }
    return nullptr;
}

kestu_error_t *read(const char *path, const kestu_tiff_options_t *options, kestu_img_t &img,
                    kestu_tiff_info_t *info) {
    Reader reader;
    kestu_error_t *err = reader.open(path, options);
    if (err)
        return err;
    const uint64_t per_row = reader.row_bytes() + sizeof(void *);
    if ((err = check_memory(per_row * reader.info().height, reader.max_memory())) ||
        (err = reader.fill(img)))
        return err;
    err = img.bits[0] == 8 ? read_rows(reader, img, img.data8) : read_rows(reader, img, img.data16);
    if (!err && info)
        *info = reader.info();
    return err;
}

} // namespace

kestu_error_t *kestu_tiff_read(const char *path, const kestu_tiff_options_t *options,
                               kestu_img_t *img, kestu_tiff_info_t *info) {
    const KeptErrno kept;
    *img = {};
    kestu_error_t *err = read(path, options, *img, info);
    if (err)
        kestu_img_free(img);
    else
        img->type = 1;
    return wrap(err, action);
}

kestu_error_t *kestu_tiff_open(const char *path, const kestu_tiff_options_t *options,
                               kestu_tiff_reader_t **out) {
    const KeptErrno kept;
    *out = nullptr;
    void *room = nullptr;
    kestu_error_t *err = kestu_mem_malloc(sizeof **out, &room);
    if (err)
        return wrap(err, action);
    auto *made = new (room) kestu_tiff_reader_t;
    if ((err = made->reader.open(path, options)))
        kestu_tiff_close(&made);
    *out = made;
    return wrap(err, action);
}

const kestu_tiff_info_t *kestu_tiff_info(const kestu_tiff_reader_t *reader) {
    return &reader->reader.info();
}

kestu_error_t *kestu_tiff_row(kestu_tiff_reader_t *reader, void *row) {
    const KeptErrno kept;
    return wrap(reader->reader.row(row), action);
}

int kestu_tiff_tags(kestu_tiff_reader_t *reader, kestu_tiff_tag_func func, void *baton) {
    const KeptErrno kept;
    return each_tag(reader->reader.handle(), func, baton);
}

void kestu_tiff_close(kestu_tiff_reader_t **reader) {
    const KeptErrno kept;
    if (!*reader)
        return;
    (*reader)->~kestu_tiff_reader_t();
    kestu_mem_free(*reader);
    *reader = nullptr;
}
