// The histogram as a picture.
#include "image/histogram.hpp"

#include "common/text.hpp"

#include <algorithm>

namespace program {
namespace {

constexpr int width = 720;
constexpr int height = 396;
constexpr int left = 64;
constexpr int right = 28;
constexpr int top = 40;
constexpr int bottom = 80;
constexpr int plot_width = width - left - right;
constexpr int plot_height = height - top - bottom;
constexpr int ticks = 4; // steps of the axes

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

std::string label(double x, double y, const char *anchor, const std::string &what) {
    return text("<text x=\"%.1f\" y=\"%.1f\" text-anchor=\"%s\">%s</text>\n", x, y, anchor,
                what.c_str());
}

// One plot, with its upper edge in the row `y`.
class Panel {
  public:
    Panel(const HistogramPlot &plot, int y)
        : plot_(plot), y_(y), baseline_(y + top + plot_height),
          bars_(gather(plot.counts.levels, 512)),
          largest_(*std::max_element(bars_.begin(), bars_.end())) {}

    std::string svg() const {
        std::string svg = label(left, y_ + 24, "start", escaped(plot_.title));
        svg += label(width - right, y_ + 24, "end",
                     text("entropy %.4f bits per pixel", plot_.counts.entropy()));
        svg += text("<path d=\"%s\" fill=\"#4a6f96\"/>\n", outline().c_str());
        svg += axes();
        svg += threshold(plot_.counts.threshold(), "intermeans", "#c0392b", 54);
        svg += threshold(plot_.counts.otsu(), "Otsu", "#27753b", 70);
        return svg;
    }

  private:
    // One closed outline of all bars: far smaller than a rectangle for each.
    std::string outline() const {
        const double step = double(plot_width) / double(bars_.size());
        std::string path = text("M%d %d", left, baseline_);
        for (size_t i = 0; i < bars_.size(); ++i) {
            const double high = bar_height(bars_[i], largest_, plot_.logarithmic) * plot_height;
            path += text("V%.1fH%.1f", baseline_ - high, left + step * double(i + 1));
        }
        return path + text("V%dZ", baseline_);
    }

    std::string axes() const {
        std::string svg = text("<path d=\"M%d %dV%dH%d\" fill=\"none\" stroke=\"#222\"/>\n", left,
                               y_ + top, baseline_, width - right);
        const auto last = double(plot_.counts.levels.size() - 1);
        for (int i = 0; i <= ticks; ++i) {
            const double part = double(i) / ticks;
            const double x = left + part * plot_width;
            const double y = baseline_ - part * plot_height;
            svg += text("<path d=\"M%.1f %dv4M%d %.1fh-4\" stroke=\"#222\"/>\n", x, baseline_, left,
                        y);
            svg += label(x, baseline_ + 18, "middle", text("%.0f", part * last));
            svg += label(left - 8, y + 4, "end",
                         short_count(count_at(part, largest_, plot_.logarithmic)));
        }
        svg += label(left + plot_width / 2.0, baseline_ + 34, "middle", "gray level");
        return svg + text("<text transform=\"translate(14 %.1f) rotate(-90)\" "
                          "text-anchor=\"middle\">pixels%s</text>\n",
                          y_ + top + plot_height / 2.0, plot_.logarithmic ? " (logarithmic)" : "");
    }

    std::string threshold(double level, const char *name, const char *colour, int below) const {
        const double part = std::clamp(level / double(plot_.counts.levels.size()), 0.0, 1.0);
        const double x = left + part * plot_width;
        return text("<path d=\"M%.1f %dV%d\" stroke=\"%s\" stroke-dasharray=\"4 3\"/>\n", x,
                    y_ + top, baseline_, colour) +
               text("<text x=\"%.1f\" y=\"%d\" text-anchor=\"%s\" fill=\"%s\">%s threshold "
                    "%.2f</text>\n",
                    x, baseline_ + below, part < 0.5 ? "start" : "end", colour, name, level);
    }

    const HistogramPlot &plot_;
    const int y_, baseline_;
    const std::vector<uint64_t> bars_;
    const uint64_t largest_;
};

} // namespace

std::string histogram_svg(const std::vector<HistogramPlot> &plots) {
    const int all = height * static_cast<int>(plots.size());
    std::string svg =
        text("<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"%d\" height=\"%d\" "
             "viewBox=\"0 0 %d %d\" font-family=\"sans-serif\" font-size=\"13\" fill=\"#222\">\n",
             width, all, width, all);
    svg += "<rect width=\"100%\" height=\"100%\" fill=\"#fff\"/>\n";
    for (size_t i = 0; i < plots.size(); ++i)
        svg += Panel(plots[i], height * static_cast<int>(i)).svg();
    return svg + "</svg>\n";
}

} // namespace program
