#include "platform/macos/RecognisedText.h"

#include <gtest/gtest.h>

#include <string>

namespace pelloran::macos {

namespace {

RecognisedLine line(const char16_t* text, double x, double y, double width, double height) {
    return {.text = QStringView(text).toString(), .confidence = 0.5F, .x = x, .y = y, .width = width, .height = height};
}

TEST(RecognisedText, BoxesAreTurnedUpsideDown) {
    struct Case {
        const char* why;
        RecognisedLine given;
        double midX;
        double midY;
    };

    const Case cases[] = {
        {"the whole picture", line(u"a", 0, 0, 1, 1), 0.5, 0.5},
        {"bottom left", line(u"a", 0, 0, 0.25, 0.125), 0.125, 0.9375},
        {"top right", line(u"a", 0.75, 0.875, 0.25, 0.125), 0.875, 0.0625},
        {"a name on a card", line(u"a", 0.25, 0.5, 0.125, 0.0625), 0.3125, 0.46875},
        {"of no size", line(u"a", 0.25, 0.25, 0, 0), 0.25, 0.75},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        const auto tokens = tokensOf({&c.given, 1});
        ASSERT_EQ(tokens.size(), 1U);
        EXPECT_EQ(tokens[0].midX, c.midX);
        EXPECT_EQ(tokens[0].midY, c.midY);
        EXPECT_EQ(tokens[0].width, c.given.width);
        EXPECT_EQ(tokens[0].height, c.given.height);
        EXPECT_EQ(tokens[0].confidence, 0.5F);
    }
}

TEST(RecognisedText, LinesKeepTheirOrderAndThoseWithoutTextAreNone) {
    const RecognisedLine lines[] = {
        line(u"right", 0.75, 0, 0, 0), line(u"", 0.5, 0, 0, 0),         line(u" \t\n", 0.5, 0, 0, 0),
        line(u"　", 0.5, 0, 0, 0),     line(u"\n 火球术 ", 0, 0, 0, 0), line(u"right", 0.75, 0, 0, 0),
    };
    QStringList texts;
    for (const OCRToken& token : tokensOf(lines)) {
        texts.append(token.text);
    }
    EXPECT_EQ(texts, QStringList({QStringLiteral("right"), QStringLiteral("火球术"), QStringLiteral("right")}));
    EXPECT_TRUE(tokensOf({}).empty());
}

TEST(RecognisedText, TroubleIsToldWhenItIsNews) {
    struct Case {
        const char* why;
        std::string readings; // '.' goes well; a letter is a trouble
        std::string told;     // 'x' where that is to be told
    };

    const Case cases[] = {
        {"all is well", "....", "    "},
        {"the same at every reading", "aaaa", "x   "},
        {"another one", "aabb", "x x "},
        {"at every other reading: each look has two", "a.a.a.", "x     "},
        {"the same when whole looks went well", "aa....a", "x     x"},
        {"one look is not enough to tell whose readings went well", "aa..a", "x    "},
        {"two by turns are news each time", "abab", "xxxx"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        RepeatedTrouble trouble;
        std::string told;
        for (const char reading : c.readings) {
            told += trouble.isNews(reading == '.' ? QString() : QString(QLatin1Char(reading))) ? 'x' : ' ';
        }
        EXPECT_EQ(told, c.told);
    }
}

} // namespace

} // namespace pelloran::macos
