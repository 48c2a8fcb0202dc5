#include "image/source.hpp"

#include "common/input_file.hpp"
#include "common/text.hpp"

#include "kestu_error_codes.h"

#include <cstring>
#include <utility>

namespace program {
namespace {

constexpr double centimetres_per_inch = 2.54;

class TiffSource : public Source {
  public:
    explicit TiffSource(kestu_tiff_reader_t *reader) : reader_(reader) {
        const kestu_tiff_info_t &info = *kestu_tiff_info(reader);
        form_.type = 1;
        form_.width = static_cast<int32_t>(info.width);
        form_.height = static_cast<int32_t>(info.height);
        form_.samples = 1;
        form_.bits[0] = info.levels;
        form_.photometric = info.gray;
        form_.resunit = info.resunit;
        const double per_inch = info.resunit == 2   ? 1
                                : info.resunit == 3 ? centimetres_per_inch
                                                    : 0;
        form_.xres = info.xres * per_inch;
        form_.yres = info.yres * per_inch;
    }
    ~TiffSource() override { kestu_tiff_close(&reader_); }
    TiffSource(const TiffSource &) = delete;
    TiffSource &operator=(const TiffSource &) = delete;

    kestu_error_t *next(void *row) override { return kestu_tiff_row(reader_, row); }
    kestu_tiff_reader_t *tiff() const override { return reader_; }
    std::string format() const override {
        const kestu_tiff_info_t &info = *this->info();
        return text("%s, %s", info.big_tiff ? "BigTIFF" : "TIFF",
                    info.big_endian ? "big-endian" : "little-endian");
    }
    std::string conversion() const override {
        const kestu_tiff_info_t &info = *this->info();
        constexpr const char *kinds[] = {"", "unsigned", "signed", "float"};
        std::string how;
        if (info.bits != info.levels || info.format != 1)
            how = text("%d-bit %s samples stretched to %d bits", info.bits,
                       info.format <= 3 ? kinds[info.format] : "", info.levels);
        const auto add = [&](bool holds, const std::string &what) {
            if (holds)
                how += (how.empty() ? "" : ", ") + what;
        };
        add(info.photometric == 3, "palette to luma");
        add(info.photometric == 2 || info.photometric == 6, "colours to luma");
        add(info.photometric > 4 && info.photometric != 6, "displayed colours to luma");
        add(info.ignored > 0,
            counted(static_cast<unsigned>(info.ignored), "extra sample") + " (alpha) left out");
        add(info.orientation > 1, "turned upright");
        return how;
    }

  private:
    kestu_tiff_reader_t *reader_;
};

// What the plain reader takes although libtiff does not.
class RecordSource : public Source {
  public:
    explicit RecordSource(kestu_img_t &record) : record_(std::exchange(record, {})) {
        form_ = record_;
        form_.data8 = nullptr;
        form_.data16 = nullptr;
    }
    ~RecordSource() override { kestu_img_free(&record_); }
    RecordSource(const RecordSource &) = delete;
    RecordSource &operator=(const RecordSource &) = delete;

    kestu_error_t *next(void *row) override {
        const void *from = record_.data8 ? static_cast<const void *>(record_.data8[at_])
                                         : static_cast<const void *>(record_.data16[at_]);
        std::memcpy(row, from, row_bytes());
        at_ = at_ + 1 == height() ? 0 : at_ + 1;
        return nullptr;
    }
    std::string format() const override { return "TIFF, little-endian"; }

  private:
    kestu_img_t record_;
    int at_ = 0;
};

// The plain reader does not look at the compression, and measures what it finds.
bool is_measurable(const kestu_img_t &record) {
    return record.compression <= 1 && record.samples == 1 && record.photometric >= 0 &&
           record.photometric <= 1 && (record.data8 || record.data16);
}

std::unique_ptr<Source> open_tiff(const char *path, uint32_t page, kestu_error_t **err) {
    kestu_tiff_options_t options{};
    options.page = page;
    kestu_tiff_reader_t *reader = nullptr;
    if (!(*err = kestu_tiff_open(path, &options, &reader)))
        return std::make_unique<TiffSource>(reader);
    Image image;
    kestu_error_t *plain = page > 1 ? nullptr : kestu_img_read_tiff(path, &image.record);
    kestu_error_clear(plain);
    if (page > 1 || plain || !is_measurable(image.record))
        return nullptr;
    kestu_error_clear(*err);
    *err = nullptr;
    return std::make_unique<RecordSource>(image.record);
}

kestu_error_t *in_words_for_pictures(kestu_error_t *err) {
    if (err && err->code == KESTU_ERR_NOT_TIFF)
        return in_words("is neither a TIFF nor a PNG picture", err);
    return err;
}

} // namespace

kestu_error_t *with_readable(const char *readable, uint32_t page, const UseSource &use) {
    kestu_error_t *err = nullptr;
    const auto source =
        begins_as_png(readable) ? open_png(readable, &err) : open_tiff(readable, page, &err);
    if (source && page > 1 && !source->info())
        return in_words(text("there is no page %u: the file has 1", page));
    return source ? use(*source) : in_words_for_pictures(err);
}

kestu_error_t *with_source(const std::string &path, uint32_t page, const UseSource &use) {
    return read_file(path,
                     [&](const char *readable) { return with_readable(readable, page, use); });
}

kestu_error_t *read_picture(const std::string &path, uint32_t page, Image &image) {
    return with_source(path, page, [&](Source &source) -> kestu_error_t * {
        kestu_img_t &record = image.record;
        if (kestu_error_t *err = make_black(record, source.width(), source.height(), source.bits()))
            return err;
        record.photometric = source.form().photometric;
        record.xres = source.form().xres;
        record.yres = source.form().yres;
        record.resunit = source.form().resunit;
        for (int r = 0; r < source.height(); ++r)
            if (kestu_error_t *err = source.next(record.data8 ? static_cast<void *>(record.data8[r])
                                                              : record.data16[r]))
                return err;
        return nullptr;
    });
}

} // namespace program
