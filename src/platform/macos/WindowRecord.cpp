#include "platform/macos/WindowRecord.h"

#include <cmath>
#include <limits>

namespace pelloran::macos {

namespace {

// The first double above all of std::int64_t; its greatest number itself is none.
constexpr double endOfWhole = 9223372036854775808.0;

std::optional<std::int64_t> whole(const Value& value) {
    if (const auto* number = std::get_if<std::int64_t>(&value)) {
        return *number;
    }
    if (const auto* number = std::get_if<double>(&value)) {
        const double truncated = std::trunc(*number);
        if (truncated >= -endOfWhole && truncated < endOfWhole) { // not a number: neither
            return static_cast<std::int64_t>(truncated);
        }
    }
    return std::nullopt;
}

std::optional<double> finite(const Value& value) {
    if (const auto* number = std::get_if<std::int64_t>(&value)) {
        return static_cast<double>(*number);
    }
    if (const auto* number = std::get_if<double>(&value); number && std::isfinite(*number)) {
        return *number;
    }
    return std::nullopt;
}

std::optional<QString> text(const Value& value) {
    const auto* found = std::get_if<QString>(&value);
    return found ? std::optional(*found) : std::nullopt;
}

// A layer too large for its field is still none of ordinary windows, and must not come to look like theirs.
std::optional<int> layerOf(const Value& value) {
    const auto layer = whole(value);
    if (!layer) {
        return std::nullopt;
    }
    using Limits = std::numeric_limits<int>;
    return static_cast<int>(*layer < Limits::min() ? Limits::min() : *layer > Limits::max() ? Limits::max() : *layer);
}

} // namespace

WindowDescription describe(const WindowRecord& record) {
    WindowDescription description{
        .number = whole(record.number),
        .ownerName = text(record.ownerName),
        .name = text(record.name),
        .layer = layerOf(record.layer),
        .bounds = std::nullopt,
    };
    if (record.bounds) {
        description.bounds = WindowBounds{finite(record.bounds->x), finite(record.bounds->y),
                                          finite(record.bounds->width), finite(record.bounds->height)};
    }
    return description;
}

std::optional<QSize> pointsOf(const WindowDescription& window) {
    constexpr double most = std::numeric_limits<std::int16_t>::max(); // more than any display
    const WindowBounds bounds = window.bounds.value_or(WindowBounds());
    const double width = std::round(bounds.width.value_or(-1));
    const double height = std::round(bounds.height.value_or(-1));
    if (!(width >= 0 && height >= 0 && width <= most && height <= most)) { // not a number: neither
        return std::nullopt;
    }
    return QSize(static_cast<int>(width), static_cast<int>(height));
}

} // namespace pelloran::macos
