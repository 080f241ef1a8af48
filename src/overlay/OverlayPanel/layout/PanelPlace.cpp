#include "overlay/OverlayPanel/layout/PanelPlace.h"

#include "json/StrictJson.h"

#include <QJsonDocument>
#include <QStringList>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <tuple>

using namespace Qt::StringLiterals;

namespace pelloran {

namespace {

// A desk, a meeting room and a television: more arrangements than this are not worth their lines.
constexpr std::size_t mostArrangements = 8;
constexpr qsizetype longestText = 64LL * 1024;
constexpr double farthest = 1e6;   // pixels, from the main screen's corner
constexpr double largest = 32'767; // X11 has no larger windows

// As it is stored.
struct StoredPlace {
    QString screens;
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;
    std::optional<double> userWidth;
    std::optional<double> userHeight;
    bool shown = true;
};

bool isSize(double width, double height) {
    return width >= minimumSize.width() && height >= lowestHeight && width <= largest && height <= largest;
}

bool isPossible(const PanelPlace& place) {
    const UpwardRect& frame = place.frame;
    return std::abs(frame.x) <= farthest && std::abs(frame.y) <= farthest && frame.width > 0 && frame.height > 0 &&
           frame.width <= largest && frame.height <= largest &&
           (!place.userSize || isSize(place.userSize->width(), place.userSize->height()));
}

double overlap(const UpwardRect& one, const UpwardRect& other) {
    const double width = std::min(one.maxX(), other.maxX()) - std::max(one.minX(), other.minX());
    const double height = std::min(one.maxY(), other.maxY()) - std::max(one.minY(), other.minY());
    return std::max(width, 0.0) * std::max(height, 0.0);
}

double gap(double min, double max, double otherMin, double otherMax) {
    return std::max({otherMin - max, min - otherMax, 0.0});
}

double distance(const UpwardRect& one, const UpwardRect& other) {
    return std::hypot(gap(one.minX(), one.maxX(), other.minX(), other.maxX()),
                      gap(one.minY(), one.maxY(), other.minY(), other.maxY()));
}

QSizeF largestOn(const UpwardRect& visible) {
    return visible.size().expandedTo(minimumSize);
}

bool fits(const QSizeF& size, const UpwardRect& visible) {
    return size.boundedTo(largestOn(visible)) == size;
}

UpwardRect movedOnto(const UpwardRect& frame, const UpwardRect& visible) {
    UpwardRect moved = frame;
    moved.width = std::min(frame.width, largestOn(visible).width());
    moved.height = std::min(frame.height, largestOn(visible).height());
    moved.x = std::max(std::min(frame.x, visible.maxX() - moved.width), visible.minX());
    moved.y = std::max(std::min(frame.y, visible.maxY() - moved.height), visible.minY());
    return moved;
}

} // namespace

namespace strict_json {

template <>
inline constexpr std::tuple fields<StoredPlace>{
    Field{"screens"_L1, &StoredPlace::screens},
    Field{"x"_L1, &StoredPlace::x},
    Field{"y"_L1, &StoredPlace::y},
    Field{"width"_L1, &StoredPlace::width},
    Field{"height"_L1, &StoredPlace::height},
    Field{"user_width"_L1, &StoredPlace::userWidth},
    Field{"user_height"_L1, &StoredPlace::userHeight},
    Field{"shown"_L1, &StoredPlace::shown},
};

} // namespace strict_json

QString arrangementOf(const std::vector<ScreenInUse>& screens) {
    QStringList each;
    for (const ScreenInUse& screen : screens) {
        const QRect& at = screen.geometry;
        const QString mark = screen.isMain && !at.topLeft().isNull() ? u" main"_s : QString();
        each.append(screen.name + u" %1,%2 %3x%4"_s.arg(at.x()).arg(at.y()).arg(at.width()).arg(at.height()) + mark);
    }
    each.sort();
    return each.join(u"; "_s);
}

QString textOf(const PanelPlaces& places) {
    std::vector<StoredPlace> stored;
    for (const PanelPlace& place : places) {
        StoredPlace& each = stored.emplace_back(StoredPlace{
            place.screens, place.frame.x, place.frame.y, place.frame.width, place.frame.height, {}, {}, place.isShown});
        if (place.userSize) {
            each.userWidth = place.userSize->width();
            each.userHeight = place.userSize->height();
        }
    }
    return QString::fromUtf8(QJsonDocument(strict_json::encode(stored)).toJson(QJsonDocument::Compact));
}

PanelPlaces placesFrom(const QString& text) {
    if (text.size() > longestText) {
        return {};
    }
    const auto json = strict_json::parse(text.toUtf8());
    const auto stored = strict_json::decode<std::vector<StoredPlace>>(json.value_or(QJsonValue()));
    if (!stored) {
        return {};
    }
    PanelPlaces places;
    for (const StoredPlace& each : *stored) {
        PanelPlace place{each.screens, {each.x, each.y, each.width, each.height}, std::nullopt, each.shown};
        if (each.userWidth && each.userHeight) {
            place.userSize = QSizeF(*each.userWidth, *each.userHeight);
        }
        if (isPossible(place) && places.size() < mostArrangements) {
            places.push_back(place);
        }
    }
    return places;
}

PanelPlaces withPlace(PanelPlaces places, const PanelPlace& place) {
    std::erase_if(places, [&](const PanelPlace& each) { return each.screens == place.screens; });
    places.insert(places.begin(), place);
    places.resize(std::min(places.size(), mostArrangements));
    return places;
}

PanelPlace placeToOpen(const PanelPlaces& places, const QString& screens, const std::vector<UpwardRect>& visible) {
    const auto same = std::ranges::find(places, screens, &PanelPlace::screens);
    if (places.empty()) {
        return {screens, initialFrame, std::nullopt, true};
    }
    PanelPlace place = same != places.end() ? *same : places.front();
    place.screens = screens;
    if (visible.empty()) {
        return place;
    }
    const auto rank = [&](const UpwardRect& screen) {
        return std::pair(-overlap(place.frame, screen), distance(place.frame, screen));
    };
    const UpwardRect& screen = *std::ranges::min_element(visible, {}, rank);
    place.frame = movedOnto(place.frame, screen);
    if (place.userSize) {
        place.userSize = place.userSize->boundedTo(largestOn(screen));
    }
    return place;
}

PanelPlace placeAfterChange(const PanelPlaces& places, const PanelPlace& now, const QString& screens,
                            const VisibleScreens& visible) {
    const bool isLost = !isComfortablyOnScreen(now.frame, visible.own);
    const bool hasOtherPlace =
        screens != now.screens && std::ranges::find(places, screens, &PanelPlace::screens) != places.end();
    PanelPlace place = now;
    place.screens = screens;
    if (hasOtherPlace || (isLost && !places.empty())) {
        place = placeToOpen(places, screens, visible.all);
        place.isShown = now.isShown; // that is how to start, not a wish to see it come or go
        return place;
    }
    const UpwardRect& screen = isLost ? visible.main : visible.own;
    if (isLost) {
        place.frame = broughtBack(now.frame, screen);
    }
    if (!fits(place.frame.size(), screen)) {
        place.frame = movedOnto(place.frame, screen);
    }
    if (place.userSize) {
        place.userSize = place.userSize->boundedTo(largestOn(screen));
    }
    return place;
}

} // namespace pelloran
