// What is drawn, pixel by pixel.
#pragma once

#include "kestu_img_shape.h"

#include <algorithm>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace kestu::test {

using Point = std::pair<int, int>;

struct Canvas {
    std::vector<Point> plotted;
    std::map<Point, double> coverage; // added up
    double lowest = 1;
    double highest = 0;
    size_t fails_at = 0; // the call that fails, if any

    static kestu_error_t *plot(int x, int y, void *data, double intensity) {
        auto &canvas = *static_cast<Canvas *>(data);
        canvas.plotted.emplace_back(x, y);
        canvas.coverage[{x, y}] += intensity;
        canvas.lowest = std::min(canvas.lowest, intensity);
        canvas.highest = std::max(canvas.highest, intensity);
        return canvas.plotted.size() == canvas.fails_at ? kestu_error_create(0, 7, nullptr, "full")
                                                        : nullptr;
    }
    double area() const {
        double sum = 0;
        for (const auto &[point, part] : coverage)
            sum += part;
        return sum;
    }
    double at(int x, int y) const {
        const auto found = coverage.find({x, y});
        return found == coverage.end() ? 0 : found->second;
    }
    std::string walk() const {
        std::string text;
        for (const auto &[x, y] : plotted)
            text += std::to_string(x) + "," + std::to_string(y) + " ";
        return text;
    }
};

} // namespace kestu::test
