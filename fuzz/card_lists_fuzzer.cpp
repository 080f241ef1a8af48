// Any bytes as public lists of cards, and any file or table that is filled from them. A list is taken or refused with
// reasons; what it fills is still such a file, says what it said before, and is filled once.

#include "data/CardFile.h"
#include "data/WinrateFields.h"
#include "fuzz/Bytes.h"
#include "fuzz/PlainJson.h"
#include "fuzz/Require.h"
#include "json/StrictJson.h"
#include "publish/CardLists.h"
#include "publish/CardTable.h"
#include "publish/Csv.h"
#include "publish/FilledFiles.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonValue>
#include <QTemporaryDir>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <tuple>
#include <vector>

namespace {

using namespace pelloran;
using fuzzing::Bytes;
using fuzzing::require;
using namespace Qt::StringLiterals;

constexpr std::array<const char*, 6> fileNames{"enUS.json", "cards.zhCN.json", "cards.json",
                                               "deDE.json", "zh-cn_enUS.json", "zhCN=cards.json"};

// A folder in memory or on the disk, as the system has it, the same for all runs.
QString listFile(std::size_t which, const QByteArray& list) {
    static const QTemporaryDir folder;
    require(folder.isValid());
    const QString path = folder.path() + u'/' + QString::fromLatin1(fileNames[which % fileNames.size()]);
    QFile file(path);
    require(file.open(QIODevice::WriteOnly) && file.write(list) == list.size());
    return path;
}

void checkReasons(const QStringList& reasons) {
    require(!reasons.isEmpty() && !reasons.contains(QString()));
}

QJsonValue contentOf(const QByteArray& json) {
    return strict_json::parse(json).value_or(QJsonValue());
}

// What lists know. Figures are nobody's but the source's.
bool isFromLists(const QString& key) {
    constexpr std::array known{"card_id"_L1, "name_zh"_L1, "name_en"_L1,    "cost"_L1,      "rarity"_L1,
                               "type"_L1,    "set"_L1,     "card_class"_L1, "hero_names"_L1};
    return std::ranges::find(known, key) != known.end();
}

// Whether the second list is what became of the first: each of its elements is one of that, in order, and none is gone
// but where it may.
template <typename Had, typename Has, typename IsKept, typename MayGo>
bool areKept(const Had& had, const Has& has, IsKept isKept, MayGo mayGo) {
    std::vector<bool> reached(std::size_t(std::ssize(has)) + 1); // so many of them are of what was gone through
    reached[0] = true;
    for (const auto& before : had) {
        for (std::size_t count = reached.size(); count-- > 0;) {
            reached[count] =
                (reached[count] && mayGo(before)) ||
                (count > 0 && reached[count - 1] && isKept(before, *(has.begin() + std::ptrdiff_t(count) - 1)));
        }
    }
    return reached.back();
}

// Of a file, for only rows may be filled, and only cards' be left out.
enum class Part { cardFile, classFile, cardsByClass, cardsOfClass, cards, classes, row, other };

Part partOf(Part whole, const QString& key) {
    switch (whole) {
    case Part::cardFile:
        return key == "cards"_L1 ? Part::cards : key == "classes"_L1 ? Part::cardsByClass : Part::other;
    case Part::classFile:
        return key == "classes"_L1 ? Part::classes : Part::other;
    case Part::cardsByClass:
        return Part::cardsOfClass;
    case Part::cardsOfClass:
        return key == "cards"_L1 ? Part::cards : Part::other;
    default:
        return Part::other;
    }
}

bool isNothing(const QJsonValue& value) {
    return value.isUndefined() || value.isNull() || value == u""_s;
}

// A row that only its number tells of, which may be in no list.
bool mayGo(const QJsonValue& row) {
    return row.isObject() && isNothing(row["card_id"_L1]) && fuzzing::fits<qint64>(row["dbf_id"_L1], 0);
}

// Whether nothing is lost or said otherwise, and nothing comes but what lists know.
bool isKept(const QJsonValue& before, const QJsonValue& after, Part part) {
    if (before.isArray()) {
        const bool areCards = part == Part::cards || part == Part::cardsOfClass;
        const Part element = areCards || part == Part::classes ? Part::row : Part::other;
        return after.isArray() &&
               areKept(
                   before.toArray(), after.toArray(),
                   [&](const QJsonValue& had, const QJsonValue& has) { return isKept(had, has, element); },
                   [&](const QJsonValue& had) { return areCards && mayGo(had); });
    }
    if (!before.isObject() || !after.isObject()) {
        return after == before;
    }
    const QJsonObject had = before.toObject();
    const QJsonObject has = after.toObject();
    const auto isOpen = [&](const QString& key) {
        return part == Part::row && isFromLists(key) && isNothing(had.value(key));
    };
    return std::ranges::all_of(had.keys(),
                               [&](const QString& key) {
                                   return isOpen(key) || isKept(had[key], has.value(key), partOf(part, key));
                               }) &&
           std::ranges::all_of(has.keys(), [&](const QString& key) { return had.contains(key) || isOpen(key); });
}

bool isFilledFrom(const QByteArray& json, const QByteArray& filled, Part file) {
    return filled == json || !fuzzing::survives(json) || isKept(contentOf(json), contentOf(filled), file);
}

bool saysNothing(const QString& text) {
    return text.isEmpty();
}

bool saysNothing(const std::optional<QString>& text) {
    return !text || text->isEmpty();
}

template <typename Number>
bool saysNothing(const std::optional<Number>& number) {
    return !number;
}

// A field is the row's own, where that says anything, and else the list's.
bool isFilled(const CardStats& before, const CardStats& after, const CardStats& listed) {
    const auto isRight = [&](auto member) {
        const auto& expected = saysNothing(before.*member) ? listed.*member : before.*member;
        return saysNothing(expected) ? saysNothing(after.*member) : after.*member == expected;
    };
    return std::apply([&](const auto&... field) { return (isRight(field.member) && ...); },
                      strict_json::fields<CardStats>);
}

bool hasOwnRows(const QByteArray& json) {
    const auto file = WinrateFile::decode(json);
    return file && !file->cards.empty();
}

void fillCards(const QByteArray& json, const CardLists& lists) {
    const auto filled = filledCardFile(json, lists);
    if (!filled) {
        checkReasons(filled.error());
        return;
    }
    const auto again = filledCardFile(filled->bytes, lists);
    require((again && again->bytes == filled->bytes) || !fuzzing::survives(json));
    require(isFilledFrom(json, filled->bytes, Part::cardFile));
    const auto before = CardFile::decode(json, QStringLiteral("cards.json"));
    const auto after = CardFile::decode(filled->bytes, QStringLiteral("cards.json"));
    // With all of its own rows left out a file is one of another shape.
    if (!before || !after || hasOwnRows(json) != hasOwnRows(filled->bytes) || !fuzzing::survives(filled->bytes)) {
        return;
    }
    require(areKept(
        before->rows, after->rows,
        [&](const CardStats& had, const CardStats& has) {
            const ListedRow found = lists.find(had.cardId.isEmpty() ? has.cardId : had.cardId, {});
            return found.card ? isFilled(had, has, found.card->card) : has.cardId == had.cardId;
        },
        [](const CardStats& had) { return had.cardId.isEmpty(); }));
}

void fillClasses(const QByteArray& json, const CardLists& lists) {
    const QByteArray filled = filledClassFile(json, lists).bytes;
    require(filledClassFile(filled, lists).bytes == filled || !fuzzing::survives(json));
    require(isFilledFrom(json, filled, Part::classFile));
    const auto before = ClassWinrateFile::decode(json);
    const auto after = ClassWinrateFile::decode(filled);
    require(before.has_value() == after.has_value());
    const std::vector<ListedHero> heroes = lists.heroes();
    for (std::size_t i = 0; before && i < before->classes.size(); ++i) {
        const ClassWinrateRow& row = after->classes.at(i);
        require(row.playerClass == before->classes[i].playerClass);
        if (!before->classes[i].heroNames) {
            const std::vector<QString> names = row.heroNames.value_or(std::vector<QString>());
            require(std::ranges::all_of(names, [&](const QString& name) {
                return std::ranges::find(heroes, ListedHero{name, row.playerClass.toUpper()}) != heroes.end();
            }));
        }
    }
}

void fillTable(const QByteArray& table, const CardLists& lists) {
    const auto filled = cardsFromTable(table, QStringLiteral("then"), lists);
    if (!filled) {
        checkReasons(filled.error());
        return;
    }
    const auto decoded = CardFile::decode(filled->file, QStringLiteral("table"));
    require(decoded && !decoded->rows.empty());
    for (const CardStats& row : decoded->rows) {
        require(!row.cardId.isEmpty());
        const ListedRow found = lists.find(row.cardId, {});
        if (found.card && row.nameEn.value_or(QString()).isEmpty()) {
            require(found.card->card.nameEn.value_or(QString()).isEmpty());
        }
    }
}

// Cells of any text, written as spreadsheets do.
void checkCsv(const QByteArray& bytes) {
    std::vector<QStringList> rows;
    for (const QByteArray& line : bytes.split('\x01')) {
        QStringList cells;
        for (const QByteArray& cell : line.split('\x02')) {
            cells.push_back(QString::fromUtf8(cell));
        }
        if (cells.size() > 1 || !cells.front().isEmpty()) {
            rows.push_back(cells);
        }
    }
    QString text;
    for (const QStringList& cells : rows) {
        QStringList quoted;
        for (QString cell : cells) {
            quoted.push_back(u'"' + cell.replace(u'"', QStringLiteral("\"\"")) + u'"');
        }
        text += quoted.join(u';') + QStringLiteral("\r\n");
    }
    const auto parsed = parseCsv(text, u';');
    require(parsed && parsed->size() == rows.size());
    for (std::size_t i = 0; i < rows.size(); ++i) {
        require((*parsed)[i].cells == rows[i]);
    }
}

} // namespace

// NOLINTNEXTLINE(readability-identifier-naming): the name is libFuzzer's.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Bytes bytes(data, size);
    const int how = bytes.take();
    // Up to two lists, and what is filled from them, each ended by a NUL.
    const QList<QByteArray> parts = bytes.rest().split('\0');
    checkCsv(parts.back());
    QStringList files;
    for (qsizetype i = 0; i + 1 < parts.size() && i < 2; ++i) {
        files.push_back(listFile(std::size_t(how) % 6 + std::size_t(i), parts[i]));
    }
    const auto lists = CardLists::read(files);
    if (!lists) {
        checkReasons(lists.error());
        return 0;
    }
    for (const ListedHero& hero : lists->heroes()) {
        require(!hero.name.isEmpty() && !hero.heroClass.isEmpty() && hero.heroClass == hero.heroClass.toUpper());
    }
    fillCards(parts.back(), *lists);
    fillClasses(parts.back(), *lists);
    fillTable(parts.back(), *lists);
    return 0;
}
