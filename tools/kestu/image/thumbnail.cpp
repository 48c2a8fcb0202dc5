#include "image/thumbnail.hpp"

#include "common/text.hpp"

#include <algorithm>
#include <cmath>

namespace program {
namespace {

// Sums of the levels that fall into each of some columns.
class Sums {
  public:
    Sums(const Rectangle &part, int columns)
        : part_(part), columns_(columns), sums_(static_cast<size_t>(columns)),
          counts_(static_cast<size_t>(columns)) {}

    template <typename Sample>
    void add(const uint8_t *row) {
        const auto *samples = reinterpret_cast<const Sample *>(row) + part_.x;
        for (int c = 0; c < part_.width; ++c) {
            const auto column = static_cast<size_t>(int64_t{c} * columns_ / part_.width);
            sums_[column] += samples[c];
            ++counts_[column];
        }
    }
    // The means, as brightnesses; begins anew.
    void take(const Contrast &contrast, bool inverted, std::vector<uint8_t> &out) {
        const double range = contrast.high - contrast.low;
        for (size_t i = 0; i < sums_.size(); ++i) {
            const double mean = sums_[i] / static_cast<double>(std::max<uint64_t>(counts_[i], 1));
            const double part = range > 0 ? (mean - contrast.low) / range : mean > contrast.low;
            const auto bright = static_cast<int>(std::lround(std::clamp(part, 0.0, 1.0) * 255));
            out.push_back(static_cast<uint8_t>(inverted ? 255 - bright : bright));
            sums_[i] = 0;
            counts_[i] = 0;
        }
    }

  private:
    const Rectangle part_;
    const int columns_;
    std::vector<double> sums_;
    std::vector<uint64_t> counts_;
};

// Repeats pixels until the picture has the size.
Thumbnail enlarged(const Thumbnail &small, int width, int height) {
    Thumbnail large{.width = width, .height = height, .pixels = {}};
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            large.pixels.push_back(static_cast<uint8_t>(
                small.at(static_cast<int>(int64_t{x} * small.width / width),
                         static_cast<int>(int64_t{y} * small.height / height))));
    return large;
}

constexpr int half_grays = 4; // of terminals with 16 colours: 30, 90, 37, 97
constexpr const char *gray_codes[half_grays] = {"30", "90", "37", "97"};

std::string colour(Display display, int bright, bool background) {
    if (display == Display::true_colour)
        return text("%d;2;%d;%d;%d", background ? 48 : 38, bright, bright, bright);
    if (display == Display::colours) { // black, a ramp of 24, white
        const int step = (bright * 25 + 127) / 255;
        return text("%d;5;%d", background ? 48 : 38,
                    step == 0    ? 16
                    : step == 25 ? 231
                                 : 231 + step);
    }
    const int step = (bright * (half_grays - 1) + 127) / 255;
    const int code = std::stoi(gray_codes[step]);
    return std::to_string(code + (background ? 10 : 0));
}

std::string base64(const std::string &bytes) {
    constexpr const char *digits =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string out;
    for (size_t i = 0; i < bytes.size(); i += 3) {
        uint32_t word = 0;
        for (size_t k = 0; k < 3; ++k)
            word = word << 8 | (i + k < bytes.size() ? static_cast<uint8_t>(bytes[i + k]) : 0U);
        for (size_t k = 0; k < 4; ++k)
            out += i + k <= bytes.size() ? digits[word >> (18 - 6 * k) & 63] : '=';
    }
    return out;
}

} // namespace

kestu_error_t *make_thumbnail(Source &source, const Rectangle &part, const Contrast &contrast,
                              int width, int height, Thumbnail &out) {
    const double scale = std::min(double(width) / part.width, double(height) / part.height);
    const auto fitted = [&](int size, int most) {
        return std::clamp(static_cast<int>(std::lround(size * scale)), 1, std::max(most, 1));
    };
    const int full_width = fitted(part.width, width);
    const int full_height = fitted(part.height, height);
    out = {.width = std::min(full_width, part.width),
           .height = std::min(full_height, part.height),
           .pixels = {}};
    Sums sums(part, out.width);
    std::vector<uint8_t> row(source.row_bytes());
    const bool inverted = source.form().photometric == 0;
    for (int y = 0; y < source.height(); ++y) {
        if (kestu_error_t *err = source.next(row.data()))
            return err;
        if (y < part.y || y >= part.y + part.height)
            continue;
        source.bits() == 8 ? sums.add<uint8_t>(row.data()) : sums.add<uint16_t>(row.data());
        const auto target = [&](int r) { return int64_t{r} * out.height / part.height; };
        if (y + 1 == part.y + part.height || target(y + 1 - part.y) != target(y - part.y))
            sums.take(contrast, inverted, out.pixels);
    }
    if (out.width != full_width || out.height != full_height)
        out = enlarged(out, full_width, full_height);
    return nullptr;
}

// The upper half of a character has its own colour, the lower one that of the background.
std::string blocks(const Thumbnail &picture, Display display) {
    std::string page;
    for (int y = 0; y < picture.height; y += 2) {
        std::string before;
        for (int x = 0; x < picture.width; ++x) {
            const bool last = y + 1 == picture.height; // half a line
            std::string code = colour(display, picture.at(x, y), false);
            if (!last)
                code.append(";").append(colour(display, picture.at(x, y + 1), true));
            if (code != before)
                page.append("\033[").append(code).append("m");
            before = code;
            page += "▀";
        }
        page += "\033[0m\n";
    }
    return page;
}

// Characters by how much of their cell they fill, on a dark ground.
std::string ascii_art(const Thumbnail &picture) {
    constexpr char ramp[] = " .:-=+*#%@";
    std::string page;
    for (int y = 0; y < picture.height; y += 2) {
        std::string line;
        for (int x = 0; x < picture.width; ++x) {
            const int lower = y + 1 < picture.height ? picture.at(x, y + 1) : picture.at(x, y);
            line += ramp[(picture.at(x, y) + lower) * 9 / 510];
        }
        page += line.erase(line.find_last_not_of(' ') + 1) + "\n";
    }
    return page;
}

// Bands of six rows, in 64 grays.
std::string sixels(const Thumbnail &picture) {
    std::string page = text("\033Pq\"1;1;%d;%d", picture.width, picture.height);
    for (int gray = 0; gray < 64; ++gray)
        page += text("#%d;2;%d;%d;%d", gray, gray * 100 / 63, gray * 100 / 63, gray * 100 / 63);
    for (int top = 0; top < picture.height; top += 6) {
        const int rows = std::min(6, picture.height - top);
        for (int gray = 0; gray < 64; ++gray) {
            std::string line;
            bool any = false;
            for (int x = 0; x < picture.width; ++x) {
                int bits = 0;
                for (int r = 0; r < rows; ++r)
                    bits |= (picture.at(x, top + r) / 4 == gray) << r;
                any = any || bits != 0;
                line += static_cast<char>('?' + bits);
            }
            if (any)
                page += text("#%d", gray) + line + "$";
        }
        page += "-";
    }
    return page + "\033\\\n";
}

std::string kitty(const Thumbnail &picture, int columns, int rows) {
    std::string colours;
    for (const uint8_t bright : picture.pixels)
        colours.append(3, static_cast<char>(bright));
    const std::string data = base64(colours);
    constexpr size_t chunk = 4096;
    std::string page;
    for (size_t at = 0; at < data.size(); at += chunk) {
        page += "\033_G";
        if (at == 0)
            page += text("a=T,f=24,q=2,s=%d,v=%d,c=%d,r=%d,", picture.width, picture.height,
                         columns, rows);
        page += text("m=%d;", at + chunk < data.size()) + data.substr(at, chunk) + "\033\\";
    }
    return page + "\n";
}

} // namespace program
