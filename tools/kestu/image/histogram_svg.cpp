// The histogram as a picture.
#include "image/histogram.hpp"

#include "common/text.hpp"

#include <algorithm>

namespace program {
namespace {

constexpr int width = 720;
constexpr int height = 360;
constexpr int left = 16;
constexpr int right = 16;
constexpr int top = 40;
constexpr int bottom = 48;
constexpr int plot_width = width - left - right;
constexpr int plot_height = height - top - bottom;
constexpr int baseline = top + plot_height;

std::string escaped(const std::string &raw) {
    std::string result;
    for (const char c : printable(raw.c_str())) {
        switch (c) {
        case '&':
            result += "&amp;";
            break;
        case '<':
            result += "&lt;";
            break;
        case '>':
            result += "&gt;";
            break;
        default:
            result += c;
        }
    }
    return result;
}

// One closed outline of all bars: far smaller than a rectangle for each.
std::string outline(const HistogramPlot &plot) {
    const std::vector<uint64_t> bars = gather(plot.levels, 512);
    const uint64_t largest = *std::max_element(bars.begin(), bars.end());
    const double step = double(plot_width) / double(bars.size());
    std::string path = text("M%d %d", left, baseline);
    for (size_t i = 0; i < bars.size(); ++i) {
        const double high = bar_height(bars[i], largest, plot.logarithmic) * plot_height;
        path += text("V%.1fH%.1f", baseline - high, left + step * double(i + 1));
    }
    return path + text("V%dZ", baseline);
}

std::string label(double x, double y, const char *anchor, const std::string &what) {
    return text("<text x=\"%.1f\" y=\"%.1f\" text-anchor=\"%s\">%s</text>\n", x, y, anchor,
                what.c_str());
}

} // namespace

std::string histogram_svg(const HistogramPlot &plot, const std::string &title) {
    const double position = plot.threshold / double(plot.levels.size());
    const double mark = left + std::clamp(position, 0.0, 1.0) * plot_width;
    std::string svg =
        text("<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"%d\" height=\"%d\" "
             "viewBox=\"0 0 %d %d\" font-family=\"sans-serif\" font-size=\"13\" fill=\"#222\">\n",
             width, height, width, height);
    svg += "<rect width=\"100%\" height=\"100%\" fill=\"#fff\"/>\n";
    svg += label(left, 24, "start", escaped(title));
    svg += label(width - right, 24, "end", text("entropy %.4f bits per pixel", plot.entropy));
    svg += text("<path d=\"%s\" fill=\"#4a6f96\"/>\n", outline(plot).c_str());
    svg += text("<path d=\"M%d %dH%d\" stroke=\"#222\"/>\n", left, baseline, width - right);
    svg += text("<path d=\"M%.1f %dV%d\" stroke=\"#c0392b\" stroke-dasharray=\"4 3\"/>\n", mark,
                top, baseline + 6);
    svg += label(left, baseline + 18, "start", "0");
    svg += label(width - right, baseline + 18, "end", text("%zu", plot.levels.size() - 1));
    svg += label(mark, baseline + 36, "middle", text("threshold %.2f", plot.threshold));
    return svg + "</svg>\n";
}

} // namespace program
