#pragma once

#include "fuzz/Bytes.h"
#include "reading/Plane.h"

#include <QRect>

#include <algorithm>

// Pictures for the targets that look for lines in them: few bytes make much of a picture.
namespace pelloran::fuzzing {

// Numbers as good as any, the same for the same beginning: Marsaglia's generator of shifts (xorshift32).
class Grain {
public:
    explicit Grain(int begin)
        : state(std::uint32_t(begin) * 2654435761U + 1) {}

    std::uint8_t next() {
        state ^= state << 13;
        state ^= state >> 17;
        state ^= state << 5;
        return std::uint8_t(state >> 11);
    }

private:
    std::uint32_t state;
};

inline QRect wholeOf(const Plane& plane) {
    return {0, 0, plane.width, plane.height};
}

inline void fill(Plane& plane, QRect area, int value) {
    area = area.intersected(QRect(0, 0, plane.width, plane.height));
    for (int y = area.top(); y <= area.bottom() && !area.isEmpty(); ++y) {
        std::fill_n(plane.row(y) + area.left(), area.width(), std::uint8_t(value));
    }
}

// A row of strokes as letters have them, with dark outlines, along an even or a bent line.
inline void paintLetters(Plane& plane, Bytes& bytes) {
    const int pitch = 4 + bytes.take() % 40;
    const int height = 4 + bytes.take() % 40;
    const int stroke = 1 + bytes.take() % 9;
    const int shade = bytes.take();
    const int bend = bytes.take() - 128;
    int x = bytes.take() * plane.width / 256;
    const int y = bytes.take() * plane.height / 256;
    const int count = 1 + bytes.take() % 24;
    for (int i = 0; i < count; ++i, x += pitch) {
        const int way = bend * (2 * i - count) * (2 * i - count) / (16 * count * count);
        const QRect upright(x, y + way, stroke, height);
        const QRect bar(x, y + way + i % 3 * height / 2, pitch * 3 / 4, stroke);
        for (const QRect& part : {upright, bar}) {
            fill(plane, part.adjusted(-2, -2, 2, 2), 0);
        }
        for (const QRect& part : {upright, bar}) {
            fill(plane, part, shade);
        }
    }
}

// The same lines again and again, as on a page: more of them than are looked at.
inline void paintPage(Plane& plane, Bytes& bytes) {
    const int letter = 3 + bytes.take() % 16;
    const int width = letter * (2 + bytes.take() % 12);
    const int shade = bytes.take();
    const int across = width + 1 + bytes.take();
    const int down = letter + 3 + bytes.take() % 32;
    for (int y = 0; y < plane.height; y += down) {
        for (int x = 0; x < plane.width; x += across) {
            fill(plane, QRect(x, y, width + 4, letter + 4), 0);
            for (int at = 2; at + letter / 2 < width; at += letter) {
                fill(plane, QRect(x + at, y + 2, letter / 2, letter), shade);
                fill(plane, QRect(x + at, y + 2 + letter / 3, letter * 3 / 4, letter / 4), shade);
            }
        }
    }
}

// Paths of light with walls between them, a pixel wide or some: where a flood has a long way to go.
inline void paintMaze(Plane& plane, Bytes& bytes) {
    const int width = 1 + bytes.take() % 6;
    const int light = bytes.take();
    const bool across = bytes.take() & 1;
    for (int y = 0; y < plane.height; ++y) {
        for (int x = 0; x < plane.width; ++x) {
            const int along = across ? y : x;
            const int lane = (across ? x : y) / width;
            const int length = across ? plane.height : plane.width;
            const bool isGate = lane % 4 == 1 ? along >= length - width : along < width;
            plane.row(y)[x] = std::uint8_t(lane % 2 == 0 || isGate ? light : 0);
        }
    }
}

inline Plane planeFrom(Bytes& bytes, int width, int height) {
    Plane plane(width, height, std::uint8_t(bytes.take()));
    for (int shapes = bytes.take() % 24; shapes > 0; --shapes) {
        const int what = bytes.take();
        if (what < 88) {
            paintLetters(plane, bytes);
        } else if (what < 96) {
            paintPage(plane, bytes);
        } else if (what < 192) {
            const QRect area(bytes.take() * width / 256, bytes.take() * height / 256, bytes.take(), bytes.take() / 2);
            fill(plane, area, bytes.take());
        } else if (what < 216) {
            paintMaze(plane, bytes);
        } else {
            Grain grain(bytes.take());
            const int strength = bytes.take();
            for (std::uint8_t& pixel : plane.pixels) {
                pixel = std::uint8_t(std::clamp(pixel + (grain.next() - 128) * strength / 256, 0, 255));
            }
        }
    }
    return plane;
}

} // namespace pelloran::fuzzing
