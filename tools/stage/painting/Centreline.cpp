#include "tools/stage/painting/Centreline.h"

#include <QImage>
#include <QLineF>
#include <QPainter>
#include <QPolygonF>

#include <algorithm>
#include <array>
#include <cmath>
#include <set>
#include <utility>
#include <vector>

namespace pelloran::stage {

namespace {

// Clockwise from above; every other one is diagonal.
constexpr std::array<QPoint, 8> around{{{0, -1}, {1, -1}, {1, 0}, {1, 1}, {0, 1}, {-1, 1}, {-1, 0}, {-1, -1}}};

// Pixels that are set or not, with an empty margin of one pixel around them.
class Bitmap {
public:
    explicit Bitmap(const QImage& grey)
        : width(grey.width() + 2)
        , height(grey.height() + 2)
        , pixels(static_cast<std::size_t>(width) * static_cast<std::size_t>(height)) {
        for (int y = 0; y < grey.height(); ++y) {
            const uchar* line = grey.constScanLine(y);
            for (int x = 0; x < grey.width(); ++x) {
                pixels[index({x, y})] = line[x] >= 128;
            }
        }
    }

    bool at(QPoint place) const { return pixels[index(place)]; }

    void clear(QPoint place) { pixels[index(place)] = false; }

    std::vector<QPoint> set() const {
        std::vector<QPoint> all;
        for (int y = 0; y < height - 2; ++y) {
            for (int x = 0; x < width - 2; ++x) {
                if (at({x, y})) {
                    all.emplace_back(x, y);
                }
            }
        }
        return all;
    }

private:
    std::size_t index(QPoint place) const {
        return static_cast<std::size_t>(place.y() + 1) * static_cast<std::size_t>(width) +
               static_cast<std::size_t>(place.x() + 1);
    }

    int width;
    int height;
    std::vector<char> pixels;
};

// Takes pixels off the borders, from two sides in turn, until lines one pixel wide are left (Zhang and Suen 1984).
void thin(Bitmap& bitmap) {
    std::vector<QPoint> left = bitmap.set();
    for (bool changed = true; changed;) {
        changed = false;
        for (const int side : {0, 2}) {
            std::vector<QPoint> kept;
            std::vector<QPoint> taken;
            for (const QPoint& place : left) {
                std::array<bool, 8> near{};
                std::ranges::transform(around, near.begin(), [&](QPoint step) { return bitmap.at(place + step); });
                const auto count = std::ranges::count(near, true);
                int rises = 0;
                for (std::size_t i = 0; i < near.size(); ++i) {
                    rises += !near[i] && near[(i + 1) % near.size()];
                }
                // Of the four sides one that is open: right or below, then left or above.
                const bool open = side == 0 ? !near[2] || !near[4] || (!near[0] && !near[6])
                                            : !near[0] || !near[6] || (!near[2] && !near[4]);
                (count >= 2 && count <= 6 && rises == 1 && open ? taken : kept).push_back(place);
            }
            // A square of four would go all at once: whatever is small keeps its last pixel.
            for (const QPoint& place : taken) {
                const bool last = std::ranges::none_of(around, [&](QPoint step) { return bitmap.at(place + step); });
                if (last) {
                    kept.push_back(place);
                } else {
                    bitmap.clear(place);
                }
            }
            changed = changed || kept.size() < left.size();
            left = std::move(kept);
        }
    }
}

// Diagonal ones only where no straight step leads around the corner: lines would have a triangle in every bend.
std::vector<QPoint> neighbours(const Bitmap& lines, QPoint place) {
    std::vector<QPoint> found;
    for (std::size_t i = 0; i < around.size(); ++i) {
        const bool diagonal = i % 2 == 1;
        const bool aroundCorner =
            diagonal && (lines.at(place + around[i - 1]) || lines.at(place + around[(i + 1) % around.size()]));
        if (lines.at(place + around[i]) && !aroundCorner) {
            found.push_back(place + around[i]);
        }
    }
    return found;
}

// The lines from one end or crossing to the next, and rings.
std::vector<std::vector<QPoint>> chains(const Bitmap& lines) {
    const std::vector<QPoint> all = lines.set();
    const auto isNode = [&](QPoint place) { return neighbours(lines, place).size() != 2; };
    std::set<std::pair<int, int>> walked; // of places on the way
    const auto key = [](QPoint place) { return std::pair(place.x(), place.y()); };
    std::vector<std::vector<QPoint>> found;
    const auto walk = [&](QPoint from, QPoint to) {
        std::vector<QPoint> chain{from};
        while (true) {
            const QPoint before = chain.back();
            chain.push_back(to);
            if (isNode(to) || to == from || !walked.insert(key(to)).second) {
                break;
            }
            const std::vector<QPoint> next = neighbours(lines, to);
            to = next[0] == before ? next[1] : next[0];
        }
        found.push_back(std::move(chain));
    };
    for (const QPoint& place : all) {
        const std::vector<QPoint> next = neighbours(lines, place);
        if (next.size() == 2) {
            continue;
        }
        if (next.empty()) {
            found.push_back({place, place + QPoint(1, 0)}); // a dot
        }
        for (const QPoint& step : next) {
            const bool pairOfNodes = isNode(step);
            if (pairOfNodes ? key(place) < key(step) : !walked.contains(key(step))) {
                walk(place, step);
            }
        }
    }
    for (const QPoint& place : all) {
        if (!isNode(place) && walked.insert(key(place)).second) {
            walk(place, neighbours(lines, place)[0]);
        }
    }
    return found;
}

// Without the steps of pixels.
QPolygonF smoothed(const std::vector<QPoint>& chain) {
    const auto last = static_cast<std::ptrdiff_t>(chain.size()) - 1;
    QPolygonF line;
    for (std::ptrdiff_t i = 0; i <= last; ++i) {
        const std::ptrdiff_t reach = std::min({i, last - i, std::ptrdiff_t{3}});
        QPointF sum;
        for (std::ptrdiff_t j = i - reach; j <= i + reach; ++j) {
            sum += chain[static_cast<std::size_t>(j)];
        }
        line.append(sum / static_cast<double>(2 * reach + 1) + QPointF(0.5, 0.5));
    }
    return line;
}

// As few points as keep within a fraction of a unit of the line (Douglas and Peucker 1973).
void simplify(const QPolygonF& line, qsizetype from, qsizetype to, QPolygonF& kept) {
    constexpr double tolerance = 0.35;
    const QLineF chord(line[from], line[to]);
    double worst = tolerance;
    qsizetype farthest = -1;
    for (qsizetype i = from + 1; i < to; ++i) {
        const QPointF way = line[i] - chord.p1();
        const double across = std::abs(way.x() * chord.dy() - way.y() * chord.dx());
        const double distance = chord.length() > 1e-6 ? across / chord.length() : std::hypot(way.x(), way.y());
        if (distance > worst) {
            worst = distance;
            farthest = i;
        }
    }
    if (farthest < 0) {
        kept.append(line[to]);
        return;
    }
    simplify(line, from, farthest, kept);
    simplify(line, farthest, to, kept);
}

} // namespace

QPainterPath centreline(const QPainterPath& shape, double shortest) {
    const QRect box = shape.boundingRect().toAlignedRect();
    if (box.isEmpty()) {
        return {};
    }
    QImage grey(box.size(), QImage::Format_Grayscale8);
    grey.fill(Qt::black);
    QPainter painter(&grey);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(-box.topLeft());
    painter.fillPath(shape, Qt::white);
    painter.end();
    Bitmap bitmap(grey);
    thin(bitmap);

    QPainterPath lines;
    for (const std::vector<QPoint>& chain : chains(bitmap)) {
        const std::size_t atStart = neighbours(bitmap, chain.front()).size();
        const std::size_t atEnd = neighbours(bitmap, chain.back()).size();
        if (std::min(atStart, atEnd) == 1 && std::max(atStart, atEnd) > 2 &&
            static_cast<double>(chain.size()) < shortest) {
            continue; // a branch, not a stroke of its own
        }
        const QPolygonF line = smoothed(chain);
        QPolygonF kept{line.front()};
        simplify(line, 0, line.size() - 1, kept);
        lines.addPolygon(kept.translated(box.topLeft()));
    }
    return lines;
}

} // namespace pelloran::stage
