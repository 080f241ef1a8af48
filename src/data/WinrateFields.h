#pragma once

#include "data/WinrateFormats.h"
#include "json/StrictJson.h"

#include <optional>
#include <tuple>

// What the records' fields are called, in files and in tables, and which are percentages. Decoding, encoding, hashing
// and the operator's checks all go by these tables.
namespace pelloran {

// A field whose number is meant to run from 0 to 100. Decoding takes any.
template <typename Record>
struct Percentage {
    QLatin1StringView key;
    std::optional<double> Record::* member;
};

template <typename>
inline constexpr bool isPercentage = false;
template <typename Record>
inline constexpr bool isPercentage<Percentage<Record>> = true;

namespace strict_json {

using Qt::StringLiterals::operator""_L1;

template <>
inline constexpr std::tuple fields<CardStats>{
    Field{"card_id"_L1, &CardStats::cardId},
    Field{"name_zh"_L1, &CardStats::nameZh},
    Field{"name_en"_L1, &CardStats::nameEn},
    Field{"cost"_L1, &CardStats::cost},
    Field{"rarity"_L1, &CardStats::rarity},
    Field{"type"_L1, &CardStats::type},
    Field{"card_class"_L1, &CardStats::cardClass},
    Field{"set"_L1, &CardStats::set},
    Percentage{"deck_win_rate"_L1, &CardStats::deckWinRate},
    Percentage{"drawn_win_rate"_L1, &CardStats::drawnWinRate},
    Percentage{"played_win_rate"_L1, &CardStats::playedWinRate},
    Field{"popularity"_L1, &CardStats::popularity},
    Field{"avg_copies_in_deck"_L1, &CardStats::avgCopiesInDeck},
    Field{"num_games"_L1, &CardStats::numGames},
};

template <>
inline constexpr std::tuple fields<WinrateFile>{
    Field{"player_class"_L1, &WinrateFile::playerClass},
    Field{"time_range"_L1, &WinrateFile::timeRange},
    Field{"fetched_at"_L1, &WinrateFile::fetchedAt},
    Field{"card_count"_L1, &WinrateFile::cardCount},
    Field{"cards"_L1, &WinrateFile::cards},
};

template <>
inline constexpr std::tuple fields<ClassWinrateRow>{
    Field{"deck_class_id"_L1, &ClassWinrateRow::deckClassId},
    Field{"player_class"_L1, &ClassWinrateRow::playerClass},
    Field{"name_zh"_L1, &ClassWinrateRow::nameZh},
    Field{"name_en"_L1, &ClassWinrateRow::nameEn},
    Percentage{"win_rate"_L1, &ClassWinrateRow::winRate},
    Percentage{"pick_rate"_L1, &ClassWinrateRow::pickRate},
    Percentage{"pct_7_plus"_L1, &ClassWinrateRow::pct7Plus},
    Field{"num_drafts"_L1, &ClassWinrateRow::numDrafts},
    Field{"rank"_L1, &ClassWinrateRow::rank},
    Field{"hero_names"_L1, &ClassWinrateRow::heroNames},
};

template <>
inline constexpr std::tuple fields<ClassWinrateFile>{
    Field{"fetched_at"_L1, &ClassWinrateFile::fetchedAt},
    Field{"selected_params"_L1, &ClassWinrateFile::selectedParams},
    Field{"classes"_L1, &ClassWinrateFile::classes},
};

} // namespace strict_json

} // namespace pelloran
