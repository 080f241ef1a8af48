#pragma once

#include "fuzz/Bytes.h"
#include "fuzz/Require.h"
#include "names/Lexicon.h"
#include "reading/chinese/CharacterModel.h"

#include <QFile>
#include <QStringList>

#include <memory>
#include <utility>
#include <vector>

// The names, and what knows them, of the targets that read lines.
namespace pelloran::fuzzing {

// The one that ships.
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
