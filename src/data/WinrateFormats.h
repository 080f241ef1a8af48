#pragma once

#include "localisation/AppLanguage.h"

#include <QByteArray>
#include <QJsonArray>
#include <QJsonValue>
#include <QString>

#include <cstddef>
#include <expected>
#include <optional>
#include <vector>

// The two data files, as plain values. Percentages run from 0 to 100 and are kept exactly as a file gives them.
//
// Decoding is strict on what it knows and deaf to what it does not; see strict_json. A file beyond the limits fails as
// one with a wrong type does.
namespace pelloran {

// Many times what the game has: some thousand cards, once for each of eleven classes.
inline constexpr std::size_t mostCardRows = 200'000;
inline constexpr std::size_t mostClassRows = 100;
inline constexpr std::size_t mostTextsOfARow = 10'000; // heroes of a class, in every language
inline constexpr qsizetype longestDataText = 1'000;

// In a file, whatever they are; more than so many rows have. The parser takes up to 200 bytes for each.
inline constexpr qsizetype mostJsonValues = 5'000'000;

// Why data could not be had. `localizedDescription` is for the user's eyes.
struct DataError {
    QString domain; // "Pelloran" for our own findings, else the part of the system that failed
    int code = 0;   // within the domain; 0 where it has none
    QString localizedDescription;
    // Of the file that could not be used, where that is known and the description does not tell.
    QString path = {}; // NOLINT(readability-redundant-member-init): makes it one that may be left out

    bool operator==(const DataError&) const = default;
};

// One card's row.
struct CardStats {
    QString cardId;
    std::optional<QString> nameZh;
    std::optional<QString> nameEn;
    std::optional<qint64> cost;
    std::optional<QString> rarity;
    std::optional<QString> type;
    std::optional<QString> cardClass;
    std::optional<QString> set;
    std::optional<double> deckWinRate;
    std::optional<double> drawnWinRate;
    std::optional<double> playedWinRate;
    std::optional<double> popularity; // as the source gives it; not a percentage
    std::optional<double> avgCopiesInDeck;
    std::optional<qint64> numGames;

    // The name in that language, else in the other one, else the identifier; an empty name counts as missing.
    QString displayName(AppLanguage language) const;
    // In the language in force.
    QString displayName() const;

    bool operator==(const CardStats&) const = default;
};

// The card file: statistics of all cards.
struct WinrateFile {
    std::optional<QString> playerClass; // class the figures were taken for
    std::optional<QString> timeRange;   // such as "LAST_7_DAYS"
    std::optional<QString> fetchedAt;   // free text
    std::optional<qint64> cardCount;    // for information; not compared with `cards`
    std::vector<CardStats> cards;

    static std::expected<WinrateFile, DataError> decode(const QByteArray& json);
    static std::expected<WinrateFile, DataError> fromJson(const QJsonValue& value);
    QByteArray encode() const;

    bool operator==(const WinrateFile&) const = default;
};

// One class's row.
struct ClassWinrateRow {
    std::optional<qint64> deckClassId;
    QString playerClass; // such as "MAGE", in any case
    QString nameZh;
    std::optional<QString> nameEn;
    std::optional<double> winRate;
    std::optional<double> pickRate;
    std::optional<double> pct7Plus; // share of runs with seven or more wins
    std::optional<qint64> numDrafts;
    std::optional<qint64> rank; // 1 is best
    // What the game's screens may have in place of the class, in any language.
    std::optional<std::vector<QString>> heroNames = {}; // NOLINT(readability-redundant-member-init): may be left out

    // English: the English name unless empty. Chinese: the Chinese name unless empty, else the English one even if it
    // is empty. Without one, the known English name of the class, else `playerClass`.
    QString displayName(AppLanguage language) const;
    // In the language in force.
    QString displayName() const;

    bool operator==(const ClassWinrateRow&) const = default;
};

// The class file: statistics of all classes.
struct ClassWinrateFile {
    std::optional<QString> fetchedAt;                   // free text
    std::optional<std::vector<QString>> selectedParams; // for information
    std::vector<ClassWinrateRow> classes;

    static std::expected<ClassWinrateFile, DataError> decode(const QByteArray& json);
    QByteArray encode() const;

    bool operator==(const ClassWinrateFile&) const = default;
};

std::expected<std::vector<CardStats>, DataError> decodeCards(const QByteArray& json);
std::expected<std::vector<CardStats>, DataError> decodeCards(const QJsonArray& rows);
QByteArray encodeCards(const std::vector<CardStats>& cards);

// Any one JSON value, a bare number or text included. A byte-order mark is skipped; invalid UTF-8 is an error.
std::expected<QJsonValue, DataError> parseJson(const QByteArray& json);

// Equal records hash equally.
size_t qHash(const CardStats& card, size_t seed = 0);
size_t qHash(const WinrateFile& file, size_t seed = 0);
size_t qHash(const ClassWinrateRow& row, size_t seed = 0);
size_t qHash(const ClassWinrateFile& file, size_t seed = 0);

} // namespace pelloran
