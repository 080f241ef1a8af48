#include "reading/chinese/ChineseInk.h"

#include "reading/Components.h"

#include <algorithm>
#include <cmath>

namespace pelloran {

namespace {

// On light ground.
constexpr double outlinedFrom = 0.10;
constexpr double outlinedTo = 0.75;
constexpr double lightGround = 0.25;   // of the way from the darkest to the brightest
constexpr double outlineReach = 0.055; // of the strip's height
constexpr double contrastFrom = 0.2;   // of the range of brightness: less beside a pixel is no outline
constexpr double contrastSpan = 0.2;
constexpr int leastRange = 24; // of brightness, 0 to 255, or there are no letters

// Shares of the strip's height, or of its square.
constexpr double narrowAtSide = 0.2;
constexpr double thinLine = 0.12;
constexpr double longLine = 0.9; // strokes are no longer than their characters are wide
constexpr double speck = 0.0010;
constexpr double characterPart = 0.008;
constexpr double widestGap = 0.45; // between characters

} // namespace

Plane inkOf(const Plane& strip, Extent seen, InkRange range) {
    Plane ink(strip.width, strip.height);
    const QRect columns = QRect(QPoint(seen.left, 0), QPoint(seen.right - 1, strip.height - 1))
                              .intersected(QRect(0, 0, strip.width, strip.height));
    if (columns.isEmpty()) {
        return ink;
    }
    const Plane letters = cropped(strip, columns);
    const double ground = percentile(letters, 0.5);
    const double bright = percentile(letters, 0.98);
    const double dark = percentile(letters, 0.02);
    if (bright - ground < leastRange) {
        return ink;
    }
    const bool outlined = ground - dark > lightGround * (bright - dark);
    const double from = outlined ? outlinedFrom : range.from;
    const double to = outlined ? outlinedTo : range.to;
    const Plane around =
        outlined ? darkestAround(strip, std::max(1, int(std::lround(outlineReach * strip.height)))) : Plane();
    for (std::size_t i = 0; i < ink.pixels.size(); ++i) {
        const double value = strip.pixels[i];
        double amount = std::clamp(((value - ground) / (bright - ground) - from) / (to - from), 0.0, 1.0);
        if (outlined) {
            const double contrast = (value - around.pixels[i]) / (bright - dark);
            amount *= std::clamp((contrast - contrastFrom) / contrastSpan, 0.0, 1.0);
        }
        ink.pixels[i] = std::uint8_t(std::lround(255 * amount));
    }
    return ink;
}

std::optional<Plane> trimmedLine(Plane ink, Extent seen, int level) {
    const double height = ink.height;
    Plane mask(ink.width, ink.height);
    for (std::size_t i = 0; i < ink.pixels.size(); ++i) {
        mask.pixels[i] = ink.pixels[i] >= level;
    }
    const Components components = componentsOf(mask);
    std::vector<std::uint8_t> kept(components.groups.size() + 1);
    int top = ink.height;
    int bottom = 0;
    for (std::size_t i = 0; i < components.groups.size(); ++i) {
        const QRect& box = components.groups[i].box;
        const bool atEdge = box.top() <= 0 || box.bottom() >= ink.height - 1;
        const bool atSide = (box.left() <= 0 || box.right() >= ink.width - 1) && box.width() < narrowAtSide * height;
        const bool isLine =
            box.width() > 2 * box.height() && box.height() < thinLine * height &&
            (box.center().y() < 0.2 * height || box.center().y() > 0.85 * height || box.width() > longLine * height);
        if (atEdge || atSide || isLine || components.groups[i].area < speck * height * height ||
            box.width() > 4 * height) {
            continue;
        }
        kept[i + 1] = 1;
        if (components.groups[i].area > characterPart * height * height && box.left() < seen.right &&
            box.right() >= seen.left) {
            top = std::min(top, box.top());
            bottom = std::max(bottom, box.bottom() + 1);
        }
    }
    if (bottom <= top) {
        return std::nullopt;
    }
    // Outwards from the letters seen, as long as the next is not too far away.
    int left = seen.right;
    int right = seen.left;
    for (bool grown = true; grown;) {
        grown = false;
        for (std::size_t i = 0; i < components.groups.size(); ++i) {
            const QRect& box = components.groups[i].box;
            const double middle = box.center().y();
            if (kept[i + 1] != 1 || middle < top - 1 || middle > bottom + 1) {
                continue;
            }
            const bool within = box.left() < seen.right && box.right() >= seen.left;
            const double gap = std::max(box.left() - right, left - box.right());
            if (within || (right > left && gap < widestGap * height)) {
                kept[i + 1] = 2;
                left = std::min(left, box.left());
                right = std::max(right, box.right() + 1);
                grown = true;
            }
        }
    }
    if (right <= left) {
        return std::nullopt;
    }
    // With the soft edges of what is kept, without those of what is not.
    Plane others(ink.width, ink.height);
    for (std::size_t i = 0; i < others.pixels.size(); ++i) {
        const int number = components.numbers[i];
        mask.pixels[i] = number != 0 && kept[std::size_t(number)] == 2;
        others.pixels[i] = number != 0 && kept[std::size_t(number)] != 2;
    }
    const Plane near = lightestAround(mask, 1);
    const Plane strange = lightestAround(others, 1);
    for (std::size_t i = 0; i < ink.pixels.size(); ++i) {
        if (!near.pixels[i] || (strange.pixels[i] && !mask.pixels[i])) {
            ink.pixels[i] = 0;
        }
    }
    const QRect area =
        QRect(QPoint(left - 1, top - 1), QPoint(right, bottom)).intersected(QRect(0, 0, ink.width, ink.height));
    return cropped(ink, area);
}

} // namespace pelloran
