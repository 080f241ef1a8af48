#pragma once

#include "fuzz/Require.h"
#include "names/Lexicon.h"
#include "reading/chinese/CharacterModel.h"

#include <QFile>
#include <QStringList>

#include <cstdint>
#include <iterator>
#include <memory>
#include <utility>
#include <vector>

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

private:
    const std::uint8_t* next;
    const std::uint8_t* end;
};

// That ships.
inline std::shared_ptr<const CharacterModel> model() {
    static const auto shipped = [] {
        QFile file(QStringLiteral(PELLORAN_MODEL));
        require(file.open(QIODevice::ReadOnly));
        auto parsed = CharacterModel::parse(file.readAll());
        require(parsed.has_value());
        return std::make_shared<const CharacterModel>(*std::move(parsed));
    }();
    return shipped;
}

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

// Some that are always the same, and some from the bytes.
inline QStringList namesFrom(Bytes& bytes) {
    QStringList list{QStringLiteral("Amber Wolf"), QStringLiteral("Copper Kettle"), QStringLiteral("Quiet Orchard"),
                     QStringLiteral("王日田"), QStringLiteral("Ox")};
    if (const int what = bytes.take(); what & 1) {
        // Of any length: something is near to whatever the picture shows.
        for (int length = 1; length <= 13; ++length) {
            list.push_back(QStringLiteral("一二三十口日田王木火人不之").left(length));
        }
    } else if (what & 2) {
        list.clear();
    }
    for (int count = bytes.take() % 16; count > 0; --count) {
        list.push_back(nameFrom(bytes));
    }
    return list;
}

inline std::shared_ptr<const Lexicon> lexiconOf(const QStringList& names) {
    std::vector<KnownName> list;
    for (const QString& name : names) {
        list.push_back({name, {}});
    }
    return std::make_shared<const Lexicon>(std::move(list), Lexicon::forCards);
}

} // namespace pelloran::fuzzing
