#include "platform/x11/RoundedRegion.h"

#include <algorithm>
#include <cmath>

namespace pelloran::x11 {

std::vector<QRect> roundedRegion(QSize size, double radius) {
    std::vector<QRect> region;
    if (size.isEmpty()) {
        return region;
    }
    const double largest = std::min(size.width(), size.height()) / 2.0;
    const double fitting = radius > 0 ? std::min(radius, largest) : 0.0; // also for what is no number
    for (int y = 0; y < size.height(); ++y) {
        const double fromEdge = std::min(y + 0.5, size.height() - y - 0.5);
        int inset = 0;
        if (fromEdge < fitting) {
            const double up = fitting - fromEdge;
            inset = static_cast<int>(std::ceil(fitting - std::sqrt(fitting * fitting - up * up) - 0.5));
        }
        const QRect row(inset, y, size.width() - 2 * inset, 1);
        if (row.isEmpty()) {
            continue;
        }
        if (!region.empty() && region.back().left() == row.left() && region.back().bottom() == y - 1) {
            region.back().setBottom(y);
        } else {
            region.push_back(row);
        }
    }
    return region;
}

} // namespace pelloran::x11
