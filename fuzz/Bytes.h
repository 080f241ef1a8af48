#pragma once

#include <QByteArray>
#include <QString>

#include <cstddef>
#include <cstdint>
#include <iterator>

// What several targets make of their bytes.
namespace pelloran::fuzzing {

// The input from front to back, then zeros.
class Bytes {
public:
    Bytes(const std::uint8_t* data, std::size_t size)
        : next(data)
        , end(data + size) {}

    int take() { return next == end ? 0 : *next++; }

    bool isEmpty() const { return next == end; }

    // Of that many bytes, the first the lowest.
    std::uint64_t takeNumber(int bytes) {
        std::uint64_t number = 0;
        for (int i = 0; i < bytes; ++i) {
            number |= std::uint64_t(take()) << (8 * i);
        }
        return number;
    }

    // As many as are left, at most.
    QByteArray takeBytes(std::size_t count) {
        const std::size_t left = std::size_t(end - next);
        const std::size_t taken = count < left ? count : left;
        const QByteArray bytes(reinterpret_cast<const char*>(next), qsizetype(taken));
        next += taken;
        return bytes;
    }

    QByteArray rest() { return takeBytes(std::size_t(end - next)); }

private:
    const std::uint8_t* next;
    const std::uint8_t* end;
};

// What names are made of: characters that the model knows, some that it does not (beyond 16 bits, too), marks, letters,
// digits, spaces, and halves of characters.
inline constexpr char16_t nameLetters[] =
    u"一二十口日田王木火人不之龙游·：，！“” Aaz09é々〇㐀\xD840\xDC00\xD83D\xD800\xDC00\0";

inline QString nameFrom(Bytes& bytes) {
    QString name;
    for (int length = bytes.take() % 26; length > 0; --length) {
        const int which = bytes.take();
        name += which < 128 ? QChar(nameLetters[std::size_t(which) % (std::size(nameLetters) - 1)])
                            : QChar(0x4E00 + (which - 128) * 160 + bytes.take());
    }
    return name;
}

} // namespace pelloran::fuzzing
