#include "app/evaluation/Truth.h"

#include "tests/app/evaluation/EvaluationSamples.h"

namespace pelloran::evaluation {
namespace {

TEST(ParseTruth, TakesBothFormsOfTruth) {
    struct Case {
        const char* why;
        const char* json;
        Truth expected;
    };

    const Offer fireball{QString(), text("Fireball")};
    const Case cases[] = {
        {"slots with identifiers and boxes",
         R"({"phase": "cardPick", "lang": "zh", "font": "kai", "size": [1280, 720], "slots": {
             "left": {"id": "F", "name": "火球术", "box": [0.1, 0.2, 0.3, 0.4]}, "middle": {"name": "寒冰箭"},
             "right": {"id": "R"}}})",
         {DraftPhase::cardPick,
          AppLanguage::zh,
          {Offer{text("F"), text("火球术")}, Offer{QString(), text("寒冰箭")}, Offer{text("R"), QString()}},
          {}}},
        {"slots that are not there, null or empty are not legible",
         R"({"phase": "heroPick", "lang": "en", "slots": {"middle": null, "right": {"id": "", "name": " "}}})",
         {DraftPhase::heroPick, AppLanguage::en, {}, {}}},
        {"names as printed",
         R"({"phase": "heroPick", "language": "en", "names": ["MAGE", "DEATH KNIGHT", "Fireball"], "width": 1})",
         {DraftPhase::heroPick,
          AppLanguage::en,
          {Offer{QString(), text("MAGE")}, Offer{QString(), text("DEATH KNIGHT")}, fireball},
          {}}},
        {"a name that is null, empty or blank is not legible",
         R"({"phase": "cardPick", "language": "en", "names": [null, "", " Fireball "]})",
         {DraftPhase::cardPick, AppLanguage::en, {std::nullopt, std::nullopt, fireball}, {}}},
        {"fewer names than slots",
         R"({"phase": "cardPick", "language": "en", "names": ["Fireball"]})",
         {DraftPhase::cardPick, AppLanguage::en, {fireball, std::nullopt, std::nullopt}, {}}},
        {"no pick: names on the picture are not offered",
         R"({"phase": "none", "language": "zh", "names": ["火球术"]})",
         {DraftPhase::idle, AppLanguage::zh, {}, {}}},
        {"no pick needs no names", R"({"phase": "none", "language": "en"})", {}},
        {"a lettering",
         R"({"phase": "none", "language": "zh", "lettering": "clerical"})",
         {DraftPhase::idle, AppLanguage::zh, {}, {}, text("clerical")}},
        {"texts in boxes, of which right and lower edges are outside",
         R"({"phase": "none", "language": "zh", "texts": [
             {"box": [10, 20, 40, 35], "text": "火球术 ", "ink": "light"}, {"box": [0, 0, 1, 1.0], "text": "七"}]})",
         {DraftPhase::idle,
          AppLanguage::zh,
          {},
          {},
          {},
          {{QRect(10, 20, 30, 15), text("火球术"), text("light")}, {QRect(0, 0, 1, 1), text("七"), {}}}}},
        {"a picture of another name",
         R"({"phase": "none", "language": "en", "file": "shot.jpg"})",
         {DraftPhase::idle, AppLanguage::en, {}, text("shot.jpg")}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        EXPECT_EQ(truthOf(c.json), c.expected);
    }
}

TEST(ParseTruth, SaysWhatIsWrong) {
    struct Case {
        const char* why;
        const char* json;
        const char* mentions;
    };

    const Case cases[] = {
        {"no JSON", "phase", "byte"},
        {"a list", "[]", "the truth file"},
        {"no phase, as in a list of faces", R"({"a.png": {"name": "A"}})", "phase"},
        {"another phase", R"({"phase": "idle", "lang": "en", "names": []})", "phase"},
        {"no language", R"({"phase": "cardPick", "names": []})", "language"},
        {"a language that names nothing", R"({"phase": "cardPick", "lang": "system", "names": []})", "language"},
        {"a pick without names", R"({"phase": "cardPick", "lang": "en"})", "names"},
        {"four names", R"({"phase": "cardPick", "lang": "en", "names": ["a", "b", "c", "d"]})", "three"},
        {"a name that is none", R"({"phase": "cardPick", "lang": "en", "names": ["a", 2]})", "names[1]"},
        {"a box without a lower edge", R"({"phase": "none", "lang": "en", "texts": [{"box": [1, 2, 3], "text": "a"}]})",
         "texts[0].box"},
        {"a box turned inside out",
         R"({"phase": "none", "lang": "en", "texts": [{"box": [1, 2, 3, 4], "text": "a"},
             {"box": [5, 2, 3, 4], "text": "a"}]})",
         "texts[1].box"},
        {"an empty box", R"({"phase": "none", "lang": "en", "texts": [{"box": [1, 4, 3, 4], "text": "a"}]})",
         "texts[0].box"},
        {"a box beyond all windows",
         R"({"phase": "none", "lang": "en", "texts": [{"box": [0, 0, 4294967297, 4], "text": "a"}]})", "texts[0].box"},
        {"a box left of the picture",
         R"({"phase": "none", "lang": "en", "texts": [{"box": [-1, 2, 3, 4], "text": "a"}]})", "texts[0].box"},
        {"half a pixel", R"({"phase": "none", "lang": "en", "texts": [{"box": [0.5, 2, 3, 4], "text": "a"}]})",
         "texts[0].box[0]"},
        {"a box without its text", R"({"phase": "none", "lang": "en", "texts": [{"box": [1, 2, 3, 4]}]})",
         "texts[0].text"},
        {"a slot that is none", R"({"phase": "cardPick", "lang": "en", "slots": {"left": "a"}})", "slots.left"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        const auto truth = parseTruth(c.json);
        ASSERT_FALSE(truth);
        EXPECT_TRUE(truth.error().contains(text(c.mentions))) << truth.error().toStdString();
    }
}

TEST(RulesFor, APictureWithoutAPickIsLookedAtByBoth) {
    const auto rules = [](DraftPhase phase) {
        Truth truth;
        truth.phase = phase;
        return rulesFor(truth);
    };
    EXPECT_EQ(rules(DraftPhase::cardPick), std::vector{DraftPhase::cardPick});
    EXPECT_EQ(rules(DraftPhase::heroPick), std::vector{DraftPhase::heroPick});
    EXPECT_EQ(rules(DraftPhase::idle), (std::vector{DraftPhase::cardPick, DraftPhase::heroPick}));
}

} // namespace
} // namespace pelloran::evaluation
