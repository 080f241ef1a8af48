#include "reading/Components.h"

#include <algorithm>

namespace pelloran {

Components componentsOf(const Plane& mask) {
    Components components;
    components.numbers.assign(mask.pixels.size(), 0);
    std::vector<int> pending;
    for (int start = 0; start < int(mask.pixels.size()); ++start) {
        if (!mask.pixels[std::size_t(start)] || components.numbers[std::size_t(start)]) {
            continue;
        }
        const int number = int(components.groups.size()) + 1;
        int area = 0;
        int left = mask.width;
        int right = 0;
        const int top = start / mask.width; // pixels are met row by row
        int bottom = top;
        components.numbers[std::size_t(start)] = number;
        pending.push_back(start);
        while (!pending.empty()) {
            const int x = pending.back() % mask.width;
            const int y = pending.back() / mask.width;
            pending.pop_back();
            ++area;
            left = std::min(left, x);
            right = std::max(right, x);
            bottom = std::max(bottom, y);
            for (int nearY = std::max(0, y - 1); nearY <= std::min(mask.height - 1, y + 1); ++nearY) {
                for (int nearX = std::max(0, x - 1); nearX <= std::min(mask.width - 1, x + 1); ++nearX) {
                    const int near = nearY * mask.width + nearX;
                    if (mask.pixels[std::size_t(near)] && !components.numbers[std::size_t(near)]) {
                        components.numbers[std::size_t(near)] = number;
                        pending.push_back(near);
                    }
                }
            }
        }
        components.groups.push_back({QRect(QPoint(left, top), QPoint(right, bottom)), area});
    }
    return components;
}

} // namespace pelloran
