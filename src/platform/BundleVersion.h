#pragma once

#include <QString>

#include <optional>

namespace pelloran {

// What the bundle that the program runs from says of itself; nothing of either where there is no bundle.
struct BundleVersion {
    static BundleVersion ofProgram();

    std::optional<QString> version; // as users know it, such as "1.4.2"
    std::optional<QString> build;

    bool operator==(const BundleVersion&) const = default;
};

} // namespace pelloran
