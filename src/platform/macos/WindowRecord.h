#pragma once

#include "platform/WindowServer.h"

#include <QSize>
#include <QString>

#include <cstdint>
#include <optional>
#include <variant>

namespace pelloran::macos {

// What a key of a window's dictionary leads to: nothing or something of no use here, a number, or text.
using Value = std::variant<std::monostate, std::int64_t, double, QString>;

// The entries of a window's dictionary that are of use, as they were found: nothing is promised of their kinds.
struct WindowRecord {
    struct Bounds {
        Value x;
        Value y;
        Value width;
        Value height;
    };

    Value number;
    Value ownerName;
    Value name;
    Value layer;
    std::optional<Bounds> bounds; // absent: no dictionary
};

// What is of another kind than it should be, no finite number or too large for its field counts as absent; fractions of
// whole numbers are dropped.
WindowDescription describe(const WindowRecord& record);

// The window's size in whole points. Absent where it is not known, or no size of a window.
std::optional<QSize> pointsOf(const WindowDescription& window);

} // namespace pelloran::macos
