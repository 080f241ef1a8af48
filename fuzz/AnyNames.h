#pragma once

#include "fuzz/Bytes.h"
#include "fuzz/Require.h"
#include "names/Lexicon.h"
#include "reading/chinese/CharacterModel.h"

#include <QCryptographicHash>
#include <QFile>
#include <QStringList>
#include <QtEndian>

#include <iterator>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

// The names, and what knows them, of the targets that read lines.
namespace pelloran::fuzzing {

// The file of a model (docs/formats.md) with those of its characters alone.
inline QByteArray partOf(const QByteArray& model, const std::vector<std::size_t>& characters) {
    constexpr qsizetype headSize = 28; // ends with sizes: of the origin, of features, of dimensions, of characters
    const auto sizeAt = [&](qsizetype at) { return qsizetype(qFromLittleEndian<quint32>(model.constData() + at)); };
    const qsizetype features = sizeAt(16);
    const qsizetype dimensions = sizeAt(20);
    const qsizetype count = sizeAt(24);
    QByteArray part = model.first(headSize - 4);
    part.resize(headSize);
    qToLittleEndian(quint32(characters.size()), part.data() + headSize - 4);
    qsizetype at = headSize;
    const auto keep = [&](qsizetype size) {
        part += model.sliced(at, size);
        at += size;
    };
    const auto keepChosen = [&](qsizetype size) {
        for (const std::size_t character : characters) {
            part += model.sliced(at + qsizetype(character) * size, size);
        }
        at += count * size;
    };
    keep(sizeAt(12));
    keepChosen(4); // the characters
    keep(features * (4 + 2 * dimensions));
    keepChosen(4); // scales
    keepChosen(dimensions);
    return part + QCryptographicHash::hash(part, QCryptographicHash::Sha256);
}

// Some of the characters of the model that ships, 1 of 24 and those that names here are made of. What is promised does
// not depend on how many there are, and the time that a reader takes does: all of them are for the tests.
inline std::shared_ptr<const CharacterModel> model() {
    static const auto some = [] {
        QFile file(QStringLiteral(PELLORAN_MODEL));
        require(file.open(QIODevice::ReadOnly));
        auto shipped = CharacterModel::parse(file.readAll());
        require(shipped.has_value());
        const std::u16string_view wanted(nameLetters, std::size(nameLetters) - 1);
        const std::u32string& known = shipped->characters();
        std::vector<std::size_t> chosen;
        for (std::size_t i = 0; i < known.size(); ++i) {
            if (i % 24 == 0 || wanted.find(char16_t(known[i])) != wanted.npos) {
                chosen.push_back(i);
            }
        }
        auto parsed = CharacterModel::parse(partOf(shipped->serialized(), chosen));
        require(parsed.has_value() && parsed->characters().size() == chosen.size());
        return std::make_shared<const CharacterModel>(*std::move(parsed));
    }();
    return some;
}

// Some names that are always the same, and some from the bytes.
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
