#include "tests/desktop/Picture.h"

#include "overlay/OverlayPanel/views/PanelColors.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <map>

namespace pelloran::testing {

QRgb sheetColor() {
    return PanelColors::of(Appearance::dark).opaqueMaterial.rgb();
}

namespace {

QRgb over(const QColor& above, const QColor& below) {
    const float alpha = above.alphaF();
    const auto mix = [alpha](int one, int other) {
        return static_cast<int>(std::lround(static_cast<float>(one) * alpha + static_cast<float>(other) * (1 - alpha)));
    };
    return qRgb(mix(above.red(), below.red()), mix(above.green(), below.green()), mix(above.blue(), below.blue()));
}

const PanelColors colors = PanelColors::of(Appearance::dark);
const QRgb sheet = sheetColor();
const QRgb tile = over(colors.tile, colors.opaqueMaterial);
constexpr int shortestTile = 100; // pixels; what is shorter is cut up by text
constexpr int paddingReach = 30;  // pixels from the panel's edge; the padding of its tiles begins and ends within
constexpr int frame = 3;          // pixels of a menu's edge

bool nearly(QRgb one, QRgb other, int tolerance) {
    return std::abs(qRed(one) - qRed(other)) <= tolerance && std::abs(qGreen(one) - qGreen(other)) <= tolerance &&
           std::abs(qBlue(one) - qBlue(other)) <= tolerance;
}

// Of one line of pixels: runs of the tiles' colour with the sheet's colour on both sides.
int tilesAlong(int length, const std::function<QRgb(int)>& pixel) {
    int count = 0;
    for (int begin = 1; begin < length; ++begin) {
        if (!nearly(pixel(begin), tile, 4) || !nearly(pixel(begin - 1), sheet, 4)) {
            continue;
        }
        int end = begin;
        while (end < length && nearly(pixel(end), tile, 4)) {
            ++end;
        }
        if (end < length && nearly(pixel(end), sheet, 4) && end - begin >= shortestTile) {
            ++count;
        }
        begin = end - 1;
    }
    return count;
}

// What differs from the background within `area`, parted where that many columns or more are empty.
std::vector<QRect> inkAlong(const QImage& picture, const QRect& area, int gap) {
    const QRgb background = backgroundOf(picture);
    std::vector<QRect> parts;
    for (int x = area.left(); x <= area.right(); ++x) {
        const QRect ink = inkOf(picture.copy(x, area.top(), 1, area.height()), background);
        if (ink.isNull()) {
            continue;
        }
        const QRect column(x, area.top() + ink.top(), 1, ink.height());
        if (parts.empty() || x - parts.back().right() > gap) {
            parts.push_back(column);
        } else {
            parts.back() |= column;
        }
    }
    return parts;
}

} // namespace

bool shows(const QImage& picture, const QColor& color) {
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            if (nearly(picture.pixel(x, y), color.rgb(), 10)) {
                return true;
            }
        }
    }
    return false;
}

QRgb backgroundOf(const QImage& picture) {
    std::map<QRgb, int> counts;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            ++counts[picture.pixel(x, y)];
        }
    }
    const auto most = std::ranges::max_element(counts, {}, [](const auto& entry) { return entry.second; });
    return most == counts.end() ? QRgb() : most->first;
}

QRect inkOf(const QImage& picture, QRgb background) {
    QRect ink;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            if (!nearly(picture.pixel(x, y), background, 24)) {
                ink |= QRect(x, y, 1, 1);
            }
        }
    }
    return ink;
}

std::vector<QRect> textLines(const QImage& menu, int innerGap) {
    constexpr int thinnest = 5; // a separator is thinner
    const QRgb background = backgroundOf(menu);
    const auto hasInk = [&](int y) {
        for (int x = frame; x < menu.width() - frame; ++x) {
            if (!nearly(menu.pixel(x, y), background, 24)) {
                return true;
            }
        }
        return false;
    };
    std::vector<QRect> lines;
    int begin = -1;
    int last = -1;
    const auto close = [&] {
        if (begin >= 0 && last - begin + 1 >= thinnest) {
            lines.emplace_back(frame, begin, menu.width() - 2 * frame, last - begin + 1);
        }
        begin = -1;
    };
    for (int y = frame; y < menu.height() - frame; ++y) {
        if (hasInk(y)) {
            begin = begin < 0 ? y : begin;
            last = y;
        } else if (begin >= 0 && y - last > innerGap) {
            close();
        }
    }
    close();
    return lines;
}

std::vector<QRect> alertButtons(const QImage& alert) {
    const auto lines = textLines(alert);
    return lines.empty() ? std::vector<QRect>() : inkAlong(alert, lines.back(), 1);
}

std::vector<QRect> alertLines(const QImage& alert) {
    constexpr int symbolGap = 5; // pixels; what parts the symbol from the text
    const auto rows = textLines(alert);
    if (rows.size() < 2) {
        return {};
    }
    const QRect above(frame, frame, alert.width() - 2 * frame, rows.back().top() - 2 * frame);
    const auto parts = inkAlong(alert, above, symbolGap);
    if (parts.size() < 2) {
        return {};
    }
    // With the margin that lines of text have at the sides.
    QRect text(parts[1].left() - frame, above.top(), 0, above.height());
    text.setRight(above.right());
    std::vector<QRect> lines = textLines(alert.copy(text), 0); // they stand close together
    for (QRect& line : lines) {
        line.translate(text.topLeft());
    }
    return lines;
}

int tilesDown(const QImage& panel) {
    int most = 0;
    for (int x = panel.width() - paddingReach; x < panel.width(); ++x) {
        most = std::max(most, tilesAlong(panel.height(), [&](int y) { return panel.pixel(x, y); }));
    }
    return most;
}

int tilesAcross(const QImage& panel) {
    int most = 0;
    for (int y = panel.height() - paddingReach; y < panel.height(); ++y) {
        most = std::max(most, tilesAlong(panel.width(), [&](int x) { return panel.pixel(x, y); }));
    }
    return most;
}

} // namespace pelloran::testing
