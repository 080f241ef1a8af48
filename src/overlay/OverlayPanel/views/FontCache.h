#pragma once

#include <QFont>
#include <QStringList>

#include <compare>
#include <cstddef>
#include <map>

namespace pelloran {

// The system's font by size and weight, each made once and kept: dragging the panel's edge asks for the same few fonts
// hundreds of times. Main thread.
class FontCache {
public:
    struct Key {
        int size;      // half pixels
        int weightRaw; // QFont's number

        auto operator<=>(const Key&) const = default;
    };

    static FontCache& shared();

    // The family that a font of the desktop's is drawn in, then families with the simplified Chinese forms of
    // characters: left to itself a system often falls back to one with the Japanese forms, or to a script as of a
    // brush.
    static QStringList withChinese(const QFont& desktops);

    // `size` in device-independent pixels, kept to the half; it must be finite. Qt takes whole pixels: halves are drawn
    // one size up.
    QFont font(double size, QFont::Weight weight);

    // How many fonts have been made.
    std::size_t count() const { return map.size(); }

private:
    std::map<Key, QFont> map;
};

} // namespace pelloran
