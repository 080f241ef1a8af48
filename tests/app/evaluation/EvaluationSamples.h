#pragma once

#include "app/evaluation/Judge.h"
#include "app/evaluation/Truth.h"
#include "tests/support/Printing.h"
#include "tests/support/SampleStore.h"

#include <gtest/gtest.h>

// What the tests of evaluating share: a few names, and short ways to write truths and looks.
namespace pelloran::evaluation {

inline const QByteArray cardFile = R"({"cards": [
    {"card_id": "FIREBALL", "name_zh": "火球术", "name_en": "Fireball"},
    {"card_id": "CORE_FIREBALL", "name_zh": "火球术", "name_en": "Fireball"},
    {"card_id": "FROSTBOLT", "name_zh": "寒冰箭", "name_en": "Frostbolt"},
    {"card_id": "TRAVELLER", "name_zh": "旅行者"},
    {"card_id": "DIGITS", "name_zh": "七", "name_en": "777"}
]})";

inline const QByteArray classFile = R"({"classes": [
    {"player_class": "MAGE", "name_zh": "法师"},
    {"player_class": "DEATHKNIGHT", "name_zh": "死亡骑士", "name_en": "Death Knight"}
]})";

inline QString text(const char* utf8) {
    return QString::fromUtf8(utf8);
}

inline std::optional<QString> optionalText(const char* utf8) {
    return utf8 ? std::optional(text(utf8)) : std::nullopt;
}

inline Truth truthOf(const char* json) {
    const auto truth = parseTruth(json);
    EXPECT_TRUE(truth) << json << ": " << truth.error().toStdString();
    return truth.value_or(Truth());
}

inline SlotMatch match(DraftSlot slot, const char* id, const char* read = "") {
    return {slot, optionalText(id), id ? 1.0 : 0.0, QStringLiteral("method"), text(read)};
}

// Ids by slot; null for a slot without a match.
inline Look look(DraftPhase rules, std::array<const char*, 3> ids, double milliseconds = 0) {
    Look made{rules, {}, milliseconds, 2 * milliseconds};
    for (const DraftSlot slot : DraftSlot::allCases()) {
        made.matches.push_back(match(slot, ids[slot], ids[slot] ? "as read" : ""));
    }
    return made;
}

class JudgeTest : public ::testing::Test {
protected:
    testing::SampleStore sample{cardFile, classFile};
    Judge judge{sample.store};
};

} // namespace pelloran::evaluation
