#include "image/picture.hpp"

#include "common/input_file.hpp"
#include "common/new_file.hpp"
#include "common/text.hpp"

#include "kestu_tiff.h"

#include <algorithm>
#include <cctype>
#include <cstdio>

#include <sys/stat.h>

namespace program {
namespace {

class TiffWriter : public PictureWriter {
  public:
    ~TiffWriter() override { kestu_error_clear(kestu_tiff_finish(&writer_)); }

    kestu_error_t *open(const char *path, const kestu_img_t &form, const PictureOptions &options) {
        kestu_tiff_write_options_t how{};
        how.deflate = options.compress == "deflate";
        how.description = options.description.empty() ? nullptr : options.description.c_str();
        return kestu_tiff_create(path, &form, &how, &writer_);
    }
    kestu_error_t *put(const void *row) override { return kestu_tiff_put_row(writer_, row); }
    kestu_error_t *finish() override { return kestu_tiff_finish(&writer_); }

  private:
    kestu_tiff_writer_t *writer_ = nullptr;
};

bool ends_in_png(const std::string &path) {
    std::string end = path.substr(path.size() - std::min<size_t>(path.size(), 4));
    std::transform(end.begin(), end.end(), end.begin(),
                   [](unsigned char c) { return std::tolower(c); });
    return end == ".png";
}

kestu_error_t *write_to(const char *partial, bool png, const kestu_img_t &form,
                        const PictureOptions &options, const PutRows &put) {
    kestu_error_t *err = nullptr;
    std::unique_ptr<PictureWriter> writer;
    if (png) {
        writer = create_png(partial, form, options, &err);
    } else {
        auto tiff = std::make_unique<TiffWriter>();
        err = tiff->open(partial, form, options);
        writer = std::move(tiff);
    }
    if (!err)
        err = put(*writer);
    return err ? err : writer->finish();
}

using Stream = std::unique_ptr<FILE, int (*)(FILE *)>;

// Writers go back in what they write, which devices and pipes do not allow: these get a copy.
kestu_error_t *write_copy(const char *device,
                          const std::function<kestu_error_t *(const char *)> &write) {
    const Stream kept(std::tmpfile(), std::fclose);
    if (!kept)
        return in_words(failed_to("write"));
    if (kestu_error_t *err = write(text("/proc/self/fd/%d", fileno(kept.get())).c_str()))
        return err;
    const Stream out(std::fopen(device, "wb"), std::fclose);
    bool written = out != nullptr;
    char buffer[1 << 14];
    while (const size_t got = written ? std::fread(buffer, 1, sizeof buffer, kept.get()) : 0)
        written = std::fwrite(buffer, 1, got, out.get()) == got;
    return written && std::fflush(out.get()) == 0 ? nullptr : in_words(failed_to("write"));
}

bool is_regular(const char *path) {
    struct stat state {};
    return stat(path, &state) == 0 && S_ISREG(state.st_mode);
}

} // namespace

kestu_error_t *check_new(const std::string &path, bool force) {
    struct stat state {};
    const bool there = path != "-" && lstat(path.c_str(), &state) == 0 && S_ISREG(state.st_mode);
    return there && !force ? in_words("exists already; --force replaces it") : nullptr;
}

kestu_error_t *write_picture(const std::string &path, const kestu_img_t &form,
                             const PictureOptions &options, const PutRows &put) {
    if (kestu_error_t *err = check_new(path, options.force))
        return err;
    return write_new_file(path, [&](const char *partial) {
        const auto write = [&](const char *file) {
            return write_to(file, ends_in_png(path), form, options, put);
        };
        return is_regular(partial) ? write(partial) : write_copy(partial, write);
    });
}

kestu_error_t *write_picture(const std::string &path, const kestu_img_t &image,
                             const PictureOptions &options) {
    return write_picture(path, image, options, [&](PictureWriter &writer) -> kestu_error_t * {
        for (int r = 0; r < image.height; ++r)
            if (kestu_error_t *err = writer.put(
                    image.data8 ? static_cast<const void *>(image.data8[r]) : image.data16[r]))
                return err;
        return nullptr;
    });
}

} // namespace program
