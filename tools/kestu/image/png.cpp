// PNG files, read and written row by row.
#include "common/input_file.hpp"
#include "common/text.hpp"
#include "image/picture.hpp"
#include "image/source.hpp"

#include <png.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <utility>
#include <vector>

namespace program {
namespace {

constexpr double metres_per_inch = 0.0254;
constexpr int64_t most_pixels = 1 << 30;
constexpr uint64_t most_interlaced = 1 << 30; // bytes, which are held at once

// What libpng said last; it leaves by a jump.
struct Said {
    std::string message;
};

[[noreturn]] void on_error(png_structp png, png_const_charp message) {
    static_cast<Said *>(png_get_error_ptr(png))->message = message;
    png_longjmp(png, 1);
}
void on_warning(png_structp, png_const_charp) {}

kestu_error_t *told(const Said &said) {
    return in_words("libpng: " + said.message);
}

class PngSource : public Source {
  public:
    ~PngSource() override { close(); }

    kestu_error_t *open(const char *path) {
        path_ = path;
        return start();
    }
    kestu_error_t *next(void *row) override {
        if (at_ == height()) {
            close();
            if (kestu_error_t *err = start())
                return err;
        }
        if (whole_.empty() && !read_row(raw_.data()))
            return told(said_);
        convert(whole_.empty() ? raw_.data() : whole_[static_cast<size_t>(at_)].data(), row);
        ++at_;
        return nullptr;
    }
    std::string format() const override { return text("PNG, %d bits", depth_); }
    std::string conversion() const override {
        std::string how = colours_ ? "colours to luma" : "";
        if (alpha_)
            how += (how.empty() ? "" : ", ") + std::string("alpha left out");
        if (depth_ < 8 && !colours_)
            how += (how.empty() ? "" : ", ") + text("%d-bit samples stretched to 8 bits", depth_);
        return how;
    }

  private:
    kestu_error_t *start() {
        at_ = 0;
        file_ = std::fopen(path_.c_str(), "rb");
        if (!file_)
            return in_words(failed_to("open"));
        png_ = png_create_read_struct(PNG_LIBPNG_VER_STRING, &said_, on_error, on_warning);
        info_ = png_ ? png_create_info_struct(png_) : nullptr;
        if (!info_ || !read_head())
            return told(said_);
        const uint64_t size =
            uint64_t{png_get_rowbytes(png_, info_)} * static_cast<uint64_t>(height());
        if (int64_t{width()} * height() > most_pixels || (interlaced_ && size > most_interlaced))
            return in_words(text("has %d x %d pixels, which are too many", width(), height()));
        channels_ = png_get_channels(png_, info_);
        raw_.resize(png_get_rowbytes(png_, info_));
        if (!interlaced_)
            return nullptr;
        whole_.assign(static_cast<size_t>(height()), raw_);
        for (auto &row : whole_)
            rows_.push_back(row.data());
        const bool read = read_whole();
        rows_.clear();
        return read ? nullptr : told(said_);
    }
    bool read_head() {
        if (setjmp(png_jmpbuf(png_)))
            return false;
        png_init_io(png_, file_);
        png_set_user_limits(png_, 1U << 30, 1U << 30);
        png_read_info(png_, info_);
        describe();
        png_set_expand(png_); // palettes to colours, fewer bits to 8
        png_set_swap(png_);
        png_read_update_info(png_, info_);
        return true;
    }
    void describe() {
        const auto type = png_get_color_type(png_, info_);
        depth_ = png_get_bit_depth(png_, info_);
        colours_ = (type & PNG_COLOR_MASK_COLOR) != 0;
        alpha_ = (type & PNG_COLOR_MASK_ALPHA) != 0 || png_get_valid(png_, info_, PNG_INFO_tRNS);
        interlaced_ = png_get_interlace_type(png_, info_) != PNG_INTERLACE_NONE;
        form_ = {};
        form_.type = 1;
        form_.width = static_cast<int32_t>(png_get_image_width(png_, info_));
        form_.height = static_cast<int32_t>(png_get_image_height(png_, info_));
        form_.samples = 1;
        form_.bits[0] = depth_ == 16 ? 16 : 8;
        form_.photometric = 1;
        form_.resunit = 2;
        form_.xres = png_get_x_pixels_per_meter(png_, info_) * metres_per_inch;
        form_.yres = png_get_y_pixels_per_meter(png_, info_) * metres_per_inch;
    }
    bool read_row(uint8_t *row) {
        if (setjmp(png_jmpbuf(png_)))
            return false;
        png_read_row(png_, row, nullptr);
        return true;
    }
    bool read_whole() {
        if (setjmp(png_jmpbuf(png_)))
            return false;
        png_read_image(png_, rows_.data());
        return true;
    }
    template <typename Sample>
    void take(const uint8_t *from, void *to) const {
        std::vector<Sample> pixel(channels_);
        auto *levels = static_cast<Sample *>(to);
        for (int c = 0; c < width(); ++c, from += channels_ * sizeof(Sample)) {
            std::memcpy(pixel.data(), from, channels_ * sizeof(Sample));
            levels[c] =
                channels_ < 3
                    ? pixel[0]
                    : static_cast<Sample>(
                          (299U * pixel[0] + 587U * pixel[1] + 114U * pixel[2] + 500) / 1000);
        }
    }
    void convert(const uint8_t *from, void *to) const {
        if (channels_ == 1)
            std::memcpy(to, from, row_bytes());
        else if (bits() == 8)
            take<uint8_t>(from, to);
        else
            take<uint16_t>(from, to);
    }
    void close() {
        png_destroy_read_struct(&png_, &info_, nullptr);
        if (file_)
            std::fclose(file_);
        file_ = nullptr;
    }

    std::string path_;
    FILE *file_ = nullptr;
    png_structp png_ = nullptr;
    png_infop info_ = nullptr;
    Said said_;
    int depth_ = 8;
    bool colours_ = false, alpha_ = false, interlaced_ = false;
    unsigned channels_ = 1;
    int at_ = 0;
    std::vector<uint8_t> raw_;
    std::vector<std::vector<uint8_t>> whole_; // of an interlaced file
    std::vector<png_bytep> rows_;
};

// Looks as the picture does: what is white there is white here.
class PngWriter : public PictureWriter {
  public:
    ~PngWriter() override { close(); }

    kestu_error_t *open(const char *path, const kestu_img_t &form, const PictureOptions &options) {
        form_ = &form;
        options_ = &options;
        row_.resize(static_cast<size_t>(form.width) * static_cast<size_t>(form.bits[0] / 8));
        file_ = std::fopen(path, "wb");
        if (!file_)
            return in_words(failed_to("open"));
        png_ = png_create_write_struct(PNG_LIBPNG_VER_STRING, &said_, on_error, on_warning);
        info_ = png_ ? png_create_info_struct(png_) : nullptr;
        return info_ && write_head() ? nullptr : told(said_);
    }
    kestu_error_t *put(const void *row) override {
        std::memcpy(row_.data(), row, row_.size());
        if (form_->photometric == 0)
            for (uint8_t &byte : row_)
                byte = static_cast<uint8_t>(~byte);
        return write_row() ? nullptr : told(said_);
    }
    kestu_error_t *finish() override {
        if (!write_end())
            return told(said_);
        const bool written = std::fclose(std::exchange(file_, nullptr)) == 0;
        return written ? nullptr : in_words(failed_to("write"));
    }

  private:
    bool write_head() {
        if (setjmp(png_jmpbuf(png_)))
            return false;
        png_init_io(png_, file_);
        png_set_IHDR(png_, info_, static_cast<png_uint_32>(form_->width),
                     static_cast<png_uint_32>(form_->height), form_->bits[0], PNG_COLOR_TYPE_GRAY,
                     PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
        if (form_->xres > 0 && form_->yres > 0)
            png_set_pHYs(png_, info_,
                         static_cast<png_uint_32>(std::lround(form_->xres / metres_per_inch)),
                         static_cast<png_uint_32>(std::lround(form_->yres / metres_per_inch)),
                         PNG_RESOLUTION_METER);
        if (!options_->description.empty()) {
            png_text text{};
            char key[] = "Description";
            text.compression = PNG_TEXT_COMPRESSION_NONE;
            text.key = key;
            text.text = const_cast<char *>(options_->description.c_str());
            png_set_text(png_, info_, &text, 1);
        }
        png_write_info(png_, info_);
        png_set_swap(png_);
        return true;
    }
    bool write_row() {
        if (setjmp(png_jmpbuf(png_)))
            return false;
        png_write_row(png_, row_.data());
        return true;
    }
    bool write_end() {
        if (setjmp(png_jmpbuf(png_)))
            return false;
        png_write_end(png_, nullptr);
        return true;
    }
    void close() {
        png_destroy_write_struct(&png_, &info_);
        if (file_)
            std::fclose(file_);
        file_ = nullptr;
    }

    const kestu_img_t *form_ = nullptr;
    const PictureOptions *options_ = nullptr;
    FILE *file_ = nullptr;
    png_structp png_ = nullptr;
    png_infop info_ = nullptr;
    Said said_;
    std::vector<uint8_t> row_;
};

} // namespace

bool begins_as_png(const char *path) {
    FILE *file = std::fopen(path, "rb");
    uint8_t head[8] = {};
    const bool read = file && std::fread(head, 1, sizeof head, file) == sizeof head;
    if (file)
        std::fclose(file);
    return read && png_sig_cmp(head, 0, sizeof head) == 0;
}

std::unique_ptr<Source> open_png(const char *path, kestu_error_t **err) {
    auto source = std::make_unique<PngSource>();
    *err = source->open(path);
    return *err ? nullptr : std::move(source);
}

std::unique_ptr<PictureWriter> create_png(const char *path, const kestu_img_t &form,
                                          const PictureOptions &options, kestu_error_t **err) {
    auto writer = std::make_unique<PngWriter>();
    *err = writer->open(path, form, options);
    return *err ? nullptr : std::move(writer);
}

} // namespace program
