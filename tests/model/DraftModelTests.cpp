#include "model/DraftModel.h"

#include "localisation/AppLanguage.h"
#include "tests/support/Printing.h"

#include <gtest/gtest.h>

#include <functional>
#include <unordered_set>

using namespace Qt::StringLiterals;

namespace pelloran {

TEST(DraftPhase, HasThreeCasesInOrder) {
    EXPECT_LT(DraftPhase::idle, DraftPhase::heroPick);
    EXPECT_LT(DraftPhase::heroPick, DraftPhase::cardPick);
    const std::unordered_set<DraftPhase> hashed{DraftPhase::idle, DraftPhase::heroPick, DraftPhase::cardPick,
                                                DraftPhase::idle};
    EXPECT_EQ(hashed.size(), 3U);
}

TEST(DraftSlot, GoesFromLeftToRight) {
    QStringList texts;
    for (const DraftSlot slot : DraftSlot::allCases()) {
        texts.append(slot.rawValue());
        EXPECT_EQ(slot.key(), slot.rawValue());
        EXPECT_EQ(DraftSlot::fromRawValue(slot.rawValue()), slot);
    }
    EXPECT_EQ(texts, (QStringList{u"left"_s, u"middle"_s, u"right"_s}));
}

TEST(DraftSlot, TakesNoOtherTexts) {
    for (const QString& text : {u""_s, u"Left"_s, u"LEFT"_s, u" left"_s, u"left "_s, u"center"_s, u"L"_s}) {
        SCOPED_TRACE(text.toStdString());
        EXPECT_EQ(DraftSlot::fromRawValue(text), std::nullopt);
    }
}

TEST(DraftSlot, IsLabelledInTheLanguageInForce) {
    const struct {
        const char* why;
        AppLanguage language;
        QStringList expected;
    } rows[] = {
        {"English", AppLanguage::en, {u"L"_s, u"M"_s, u"R"_s}},
        {"Chinese", AppLanguage::zh, {u"左"_s, u"中"_s, u"右"_s}},
    };

    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        AppLanguage::overridePreference(row.language);
        QStringList labels;
        for (const DraftSlot slot : DraftSlot::allCases()) {
            labels.append(slot.label());
        }
        EXPECT_EQ(labels, row.expected);
    }
    AppLanguage::configure(nullptr, nullptr);
}

TEST(DraftState, KnowsNothingAtFirst) {
    const DraftState state;
    EXPECT_FALSE(state.inDraft);
    EXPECT_EQ(state.draftMode, u"UNKNOWN"_s);
    EXPECT_EQ(state.scene, u"UNKNOWN"_s);
    EXPECT_EQ(state.deckId, std::nullopt);
    EXPECT_EQ(state.hero, std::nullopt);
    EXPECT_FALSE(state.hasHero);
    EXPECT_TRUE(state.deckCardIds.isEmpty());
    EXPECT_EQ(state.lastChoiceName, std::nullopt);
    EXPECT_EQ(state.lastChoiceId, std::nullopt);
    EXPECT_EQ(state.sessionDir, std::nullopt);
    EXPECT_EQ(state.phase, DraftPhase::idle);
}

TEST(DraftState, IsMadeOfElevenFieldsInOrder) {
    const DraftState state{true,     u"DRAFTING"_s, u"DRAFT"_s, u"1"_s,  u"HERO_01"_s,        true,
                           {u"X"_s}, u"Fireball"_s, u"Y"_s,     u"/s"_s, DraftPhase::cardPick};
    EXPECT_EQ(state.hero, u"HERO_01"_s);
    EXPECT_EQ(state.lastChoiceId, u"Y"_s);
    EXPECT_EQ(state.phase, DraftPhase::cardPick);
}

TEST(DraftState, ComparesEveryField) {
    const struct {
        const char* why;
        std::function<void(DraftState&)> change;
    } rows[] = {
        {"inDraft", [](DraftState& state) { state.inDraft = true; }},
        {"draftMode", [](DraftState& state) { state.draftMode = u"X"_s; }},
        {"scene", [](DraftState& state) { state.scene = u"X"_s; }},
        {"deckId", [](DraftState& state) { state.deckId = u""_s; }},
        {"hero", [](DraftState& state) { state.hero = u""_s; }},
        {"hasHero", [](DraftState& state) { state.hasHero = true; }},
        {"deckCardIds", [](DraftState& state) { state.deckCardIds.append(u""_s); }},
        {"lastChoiceName", [](DraftState& state) { state.lastChoiceName = u""_s; }},
        {"lastChoiceId", [](DraftState& state) { state.lastChoiceId = u""_s; }},
        {"sessionDir", [](DraftState& state) { state.sessionDir = u""_s; }},
        {"phase", [](DraftState& state) { state.phase = DraftPhase::heroPick; }},
    };

    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        DraftState changed;
        EXPECT_EQ(changed, DraftState());
        row.change(changed);
        EXPECT_NE(changed, DraftState());
    }
}

TEST(SlotMatch, ComparesEveryField) {
    const SlotMatch match{DraftSlot::left, u"X"_s, 0.9, u"card-layout"_s, u"Fireball"_s};

    const struct {
        const char* why;
        std::function<void(SlotMatch&)> change;
    } rows[] = {
        {"slot", [](SlotMatch& other) { other.slot = DraftSlot::right; }},
        {"cardId", [](SlotMatch& other) { other.cardId.reset(); }},
        {"confidence", [](SlotMatch& other) { other.confidence = 0.91; }},
        {"method", [](SlotMatch& other) { other.method = u"class-layout"_s; }},
        {"ocrText", [](SlotMatch& other) { other.ocrText.clear(); }},
    };

    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        SlotMatch changed = match;
        EXPECT_EQ(changed, match);
        row.change(changed);
        EXPECT_NE(changed, match);
    }
}

TEST(AppConfig, HasItsDefaults) {
    const AppConfig config;
    EXPECT_EQ(config.nameLengths, NameLengths::limited);
    EXPECT_EQ(config.pollInterval, 0.9);
    EXPECT_EQ(config.logsDir, u"/Applications/Hearthstone/Logs"_s);
    EXPECT_EQ(config.windowOwnerHint, u"Hearthstone"_s);
    const AppConfig::Regions cards{
        {DraftSlot::left, QRectF(0.155, 0.155, 0.155, 0.5)},
        {DraftSlot::middle, QRectF(0.325, 0.155, 0.155, 0.5)},
        {DraftSlot::right, QRectF(0.495, 0.155, 0.155, 0.5)},
    };
    const AppConfig::Regions heroes{
        {DraftSlot::left, QRectF(0.18, 0.16, 0.18, 0.4)},
        {DraftSlot::middle, QRectF(0.40, 0.16, 0.18, 0.4)},
        {DraftSlot::right, QRectF(0.62, 0.16, 0.18, 0.4)},
    };
    EXPECT_EQ(config.cardRois, cards);
    EXPECT_EQ(config.heroRois, heroes);
}

TEST(AppConfig, KeepsTheRegionsThatAreLeftOut) {
    const AppConfig config{.pollInterval = 2, .logsDir = u"/logs"_s, .windowOwnerHint = u"game"_s};
    EXPECT_EQ(config.cardRois, AppConfig().cardRois);
    EXPECT_EQ(config.heroRois, AppConfig().heroRois);
    EXPECT_NE(config, AppConfig());
}

} // namespace pelloran
