#include "app/evaluation/Judge.h"

#include "tests/app/evaluation/EvaluationSamples.h"

namespace pelloran::evaluation {
namespace {

TEST_F(JudgeTest, ComparesNamesInTheLanguageOfThePicture) {
    struct Case {
        const char* why;
        DraftPhase phase;
        AppLanguage language;
        std::optional<Offer> offered;
        const char* matched;
        std::optional<Verdict> verdict;
        const char* shown;
    };

    const auto name = [](const char* printed) { return Offer{QString(), text(printed)}; };
    const auto both = [](const char* id, const char* printed) { return Offer{text(id), text(printed)}; };
    constexpr auto card = DraftPhase::cardPick;
    constexpr auto hero = DraftPhase::heroPick;
    constexpr auto none = DraftPhase::idle;
    constexpr auto en = AppLanguage::en;
    constexpr auto zh = AppLanguage::zh;
    const Case cases[] = {
        {"the card", card, en, name("Fireball"), "FIREBALL", Verdict::right, "Fireball"},
        {"a reprint of the same name", card, en, both("FIREBALL", "Fireball"), "CORE_FIREBALL", Verdict::right,
         "Fireball"},
        {"compared as names are matched", card, en, name("FIRE BALL 4"), "FIREBALL", Verdict::right, "Fireball"},
        {"in the other language", card, zh, name("火球术"), "FIREBALL", Verdict::right, "火球术"},
        {"another card", card, en, name("Fireball"), "FROSTBOLT", Verdict::wrong, "Frostbolt"},
        {"nothing", card, en, name("Fireball"), nullptr, Verdict::unread, nullptr},
        {"the identifier is enough", card, en, both("TRAVELLER", ""), "TRAVELLER", Verdict::right, "旅行者"},
        {"no name in this language: shown in the other, right by identifier", card, en, both("TRAVELLER", "Traveller"),
         "TRAVELLER", Verdict::right, "旅行者"},
        {"no name in this language: unknown by name", card, en, name("Traveller"), "TRAVELLER", Verdict::wrongMissing,
         "旅行者"},
        {"not in the data, nothing shown", card, en, name("Newcomer"), nullptr, Verdict::missing, nullptr},
        {"not in the data, another shown", card, en, both("NEW", "Newcomer"), "FIREBALL", Verdict::wrongMissing,
         "Fireball"},
        {"known in the other language only", card, en, name("火球术"), nullptr, Verdict::missing, nullptr},
        {"names of which nothing is left do not equal each other", card, en, name("123"), "DIGITS",
         Verdict::wrongMissing, "777"},
        {"not legible, nothing shown", card, en, std::nullopt, nullptr, std::nullopt, nullptr},
        {"not legible, something shown", card, en, std::nullopt, "FIREBALL", std::nullopt, "Fireball"},
        {"a class in capitals", hero, en, name("MAGE"), "MAGE", Verdict::right, "Mage"},
        {"a class of two words", hero, en, name("DEATH KNIGHT"), "DEATHKNIGHT", Verdict::right, "Death Knight"},
        {"a class by its key", hero, zh, both("DEATHKNIGHT", ""), "DEATHKNIGHT", Verdict::right, "死亡骑士"},
        {"any of its names", hero, en, name("法师"), "MAGE", Verdict::right, "Mage"},
        {"another class", hero, en, name("MAGE"), "DEATHKNIGHT", Verdict::wrong, "Death Knight"},
        {"a class without figures", hero, en, name("ROGUE"), nullptr, Verdict::missing, nullptr},
        {"a card is no class", hero, en, name("Fireball"), nullptr, Verdict::missing, nullptr},
        {"no pick, nothing shown", none, en, std::nullopt, nullptr, std::nullopt, nullptr},
        {"no pick, a card shown", none, en, std::nullopt, "FIREBALL", Verdict::falseOffer, "Fireball"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        const Truth truth{c.phase, c.language, {std::nullopt, c.offered, std::nullopt}, {}};
        const auto answers = judge.judge(truth, look(rulesFor(truth).front(), {nullptr, c.matched, nullptr}));
        ASSERT_EQ(answers.size(), 3U);
        EXPECT_EQ(answers[1].verdict, c.verdict);
        EXPECT_EQ(answers[1].shown, optionalText(c.shown));
        EXPECT_EQ(answers[1].offered, c.offered);
        EXPECT_EQ(answers[0].verdict, std::nullopt);
    }
}

TEST_F(JudgeTest, LooksForClassesByTheRulesOfAHeroPick) {
    const Truth truth = truthOf(R"({"phase": "none", "language": "zh"})");
    const auto answers = judge.judge(truth, look(DraftPhase::heroPick, {nullptr, nullptr, "MAGE"}));
    EXPECT_EQ(answers[2].verdict, Verdict::falseOffer);
    EXPECT_EQ(answers[2].shown, text("法师"));
}

TEST_F(JudgeTest, GoesBySlots) {
    const Truth truth = truthOf(R"({"phase": "cardPick", "language": "en", "names": ["Fireball", "Frostbolt", ""]})");
    const auto answers = judge.judge(truth, look(DraftPhase::cardPick, {"FROSTBOLT", "FIREBALL", nullptr}));
    EXPECT_EQ(answers[0].verdict, Verdict::wrong) << "both are there, but in each other's place";
    EXPECT_EQ(answers[1].verdict, Verdict::wrong);
    EXPECT_EQ(answers[2].verdict, std::nullopt);
}

TEST_F(JudgeTest, HasEachTextReadInItsBox) {
    struct Case {
        const char* why;
        AppLanguage language;
        const char* printed;
        const char* read;
        Verdict verdict;
    };

    const Case cases[] = {
        {"the name", AppLanguage::zh, "火球术", "火球术", Verdict::right},
        {"compared as names are matched", AppLanguage::en, "Fire ball!", "FIREBALL", Verdict::right},
        {"another name", AppLanguage::zh, "火球术", "寒冰箭", Verdict::wrong},
        {"nothing", AppLanguage::zh, "火球术", nullptr, Verdict::unread},
        {"no name, nothing read", AppLanguage::zh, "隐藏", nullptr, Verdict::missing},
        {"no name, and a name read", AppLanguage::zh, "隐藏", "火球术", Verdict::wrongMissing},
        {"no name in this language", AppLanguage::en, "火球术", "火球术", Verdict::wrongMissing},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        const BoxedText boxed{QRect(3, 4, 5, 6), text(c.printed), text("dark")};
        const Truth truth{DraftPhase::idle, c.language, {}, {}, {}, {boxed}};
        const QImage window(20, 10, QImage::Format_RGB32);
        const auto answers = judge.judgeTexts(truth, window, [&](const QImage& seen, const QRect& box) {
            EXPECT_EQ(seen.cacheKey(), window.cacheKey());
            EXPECT_EQ(box, boxed.box);
            return optionalText(c.read);
        });
        EXPECT_EQ(answers, (std::vector{TextAnswer{boxed, optionalText(c.read), c.verdict}}));
    }
}

TEST_F(JudgeTest, ReadsNothingWhereThereAreNoTexts) {
    const auto reader = [](const QImage&, const QRect&) -> std::optional<QString> {
        ADD_FAILURE() << "nothing to read";
        return std::nullopt;
    };
    EXPECT_TRUE(judge.judgeTexts(Truth(), QImage(), reader).empty());
}

} // namespace
} // namespace pelloran::evaluation
