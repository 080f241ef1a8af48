#include "recording/Format.h"

#include "tests/support/Printing.h"

#include <gtest/gtest.h>

namespace pelloran::recording {
namespace {

TickRecord wholeTick() {
    TickRecord tick;
    tick.at = 1234;
    tick.language = QStringLiteral("zh");
    tick.forgets = true;
    tick.logs = LogsChange{true, LogChange{true, {}, QStringList{QStringLiteral("currMode=DRAFT")}, {}},
                           LogChange{{}, true, {}, QStringLiteral("Dra")}};
    tick.windows = WindowsRecord{std::vector{WindowRecord{5, true, -10, 2.5, 1280, 720}}, std::nullopt};
    tick.image = ImageRecord{1280, 720, {}};
    ReadRecord read;
    read.picture = 3;
    read.bands = std::vector{BandRecord{1, 2, 3, 4}};
    read.tokens =
        std::vector{TokenRecord{QStringLiteral("火球术"), 0.5, 0.25, 0.4, 0.1, 0.02},
                    TokenRecord{QStringLiteral("Fireball"), 0.5, 0.5, 0.4, 0.1, 0.02, QStringLiteral("Fireba1l")}};
    read.columns = std::vector{0.2, 0.4, 0.6};
    tick.reads = std::vector{read};
    tick.shown = true;
    tick.snapshot = QJsonObject{{QStringLiteral("inDraft"), true}};
    return tick;
}

TEST(RecordingFormat, GivesBackWhatWasWritten) {
    for (const TickRecord& tick : {TickRecord(), wholeTick()}) {
        const QByteArray line = lineOf(tick);
        EXPECT_TRUE(line.endsWith('\n'));
        EXPECT_EQ(line.count('\n'), 1);
        const auto again = parseTick(line);
        ASSERT_TRUE(again) << again.error().toStdString();
        EXPECT_EQ(*again, tick);
    }
    const PartHeader header{
        formatVersion, QStringLiteral("1.2.3"), QString(), QStringLiteral("6.4"), QStringLiteral("x"), true, true};
    const auto again = parseHeader(lineOf(header));
    ASSERT_TRUE(again);
    EXPECT_EQ(*again, header);
}

TEST(RecordingFormat, TellsWhatWasReadBeforeANameWasTakenForIt) {
    for (const QString& letters : {QString(), QStringLiteral("Fireba1l")}) {
        const OCRToken token{QStringLiteral("Fireball"), 0.5F, 0.25, 0.4, 0.1, 0.02, letters};
        EXPECT_EQ(toRecord(token).letters.has_value(), !letters.isEmpty());
        EXPECT_EQ(toToken(toRecord(token)), token);
    }
}

TEST(RecordingFormat, RefusesWhatCannotBe) {
    struct Case {
        const char* why;
        QByteArray line;
        const char* told;
    };

    const Case cases[] = {
        {"no JSON", "nonsense\n", "is no JSON"},
        {"nothing", "\n", "is no JSON"},
        {"a list", "[]\n", "is not an object"},
        {"no time", "{}\n", "at"},
        {"time before the beginning", R"({"at":-1})", "impossible time"},
        {"text for a number", R"({"at":"1"})", "at is not a whole number"},
        {"unknown language", R"({"at":1,"language":"tlh"})", "unknown language"},
        {"logs without a session", R"({"at":1,"logs":{}})", "logs.session"},
        {"snapshot that is none", R"({"at":1,"snapshot":3})", "snapshot that is no object"},
        {"window of no size that is",
         R"({"at":1,"windows":{"all":[{"number":1,"named":true,"x":1e300,"y":0,"width":1,"height":1}]}})",
         "window that cannot be"},
        {"window of a number beyond any",
         R"({"at":1,"windows":{"all":[{"number":-1,"named":true,"x":1,"y":0,"width":1,"height":1}]}})",
         "window that cannot be"},
        {"picture larger than any", R"({"at":1,"image":{"width":100000,"height":100000}})", "impossible size"},
        {"picture too large in all", R"({"at":1,"image":{"width":16384,"height":16384}})", "impossible size"},
        {"picture without a size", R"({"at":1,"image":{}})", "impossible size"},
        {"unknown error", R"({"at":1,"image":{"error":"bad luck"}})", "unknown error"},
        {"band outside",
         R"({"at":1,"image":{"width":10,"height":10},"reads":[{"picture":0,"bands":[{"x":5,"y":5,"width":6,"height":1}]}]})",
         "not within it"},
        {"band before",
         R"({"at":1,"image":{"width":10,"height":10},"reads":[{"picture":0,"bands":[{"x":-1,"y":5,"width":6,"height":1}]}]})",
         "not within it"},
        {"band whose end is beyond all numbers",
         R"({"at":1,"image":{"width":10,"height":10},"reads":[{"picture":0,"bands":[{"x":9,"y":5,"width":9223372036854775807,"height":1}]}]})",
         "not within it"},
        {"picture of nothing", R"({"at":1,"reads":[{"picture":0,"bands":[{"x":0,"y":0,"width":1,"height":1}]}]})",
         "belongs nowhere"},
        {"picture that has no bands", R"({"at":1,"image":{"width":10,"height":10},"reads":[{"picture":0}]})",
         "belongs nowhere"},
        {"picture named by a path", R"({"at":1,"image":{"width":10,"height":10},"reads":[{"picture":"../../x"}]})",
         "picture is not a whole number"},
        {"picture of a number below all",
         R"({"at":1,"image":{"width":10,"height":10},"reads":[{"picture":-3,"bands":[{"x":0,"y":0,"width":1,"height":1}]}]})",
         "picture that cannot be"},
        {"reading of nothing", R"({"at":1,"reads":[{}]})", "reading of nothing"},
        {"two columns", R"({"at":1,"reads":[{"same":true,"columns":[1,2]}]})", "columns that are none"},
        {"more readings than there can be",
         R"({"at":1,"reads":[{"same":true},{"same":true},{"same":true},{"same":true},{"same":true}]})",
         "more than 4 readings"},
        {"a line that is too long", R"({"at":1,"language":")" + QByteArray(largestLine, 'x') + "\"}", "longer than"},
        {"a name that is too long",
         R"({"at":1,"reads":[{"given":true,"tokens":[{"text":")" + QByteArray(longestText + 1, 'x') +
             R"(","confidence":1,"midX":0,"midY":0,"width":0,"height":0}]}]})",
         "more than 1000 characters"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        const auto tick = parseTick(c.line);
        ASSERT_FALSE(tick);
        EXPECT_TRUE(tick.error().contains(QString::fromUtf8(c.told))) << tick.error().toStdString();
    }
}

TEST(RecordingFormat, SaysWhenAnotherProgramIsNeeded) {
    const auto header = parseHeader(R"({"format":2,"somethingNew":true})");
    ASSERT_FALSE(header);
    EXPECT_EQ(header.error(), QStringLiteral("is of format 2, and this program knows format 1"));
}

TEST(RecordingFormat, KnowsPartsByTheirNames) {
    EXPECT_EQ(partName(7), QStringLiteral("part-000007"));
    EXPECT_EQ(partNumber(QStringLiteral("part-000007")), 7);
    for (const char* name :
         {"part-7", "part-0000007", "Part-000007", "part-00000a", "part-000007\n", "../part-000007", ""}) {
        EXPECT_EQ(partNumber(QString::fromLatin1(name)), std::nullopt) << name;
    }
}

TEST(RecordingFormat, KnowsWhatFollowsFromATickAlone) {
    const auto snapshot = [](std::initializer_list<bool> recognized) {
        QJsonArray cards;
        for (const bool each : recognized) {
            cards.append(QJsonObject{{QStringLiteral("recognized"), each}});
        }
        return QJsonObject{{QStringLiteral("inDraft"), true}, {QStringLiteral("cards"), cards}};
    };
    const auto read = [](std::initializer_list<const char*> lines) {
        ReadText text;
        for (const char* line : lines) {
            text.tokens.push_back({QString::fromLatin1(line), 1, 0.5, 0.4, 0.1, 0.01});
        }
        return text;
    };
    EXPECT_TRUE(standsAlone(QJsonObject{{QStringLiteral("inDraft"), false}}, {}));
    EXPECT_TRUE(standsAlone(snapshot({true, true, true}), read({"a", "b", "c"})));
    EXPECT_FALSE(standsAlone(snapshot({true, true, true}), read({"a", "b"})))
        << "one may be shown since an earlier tick";
    EXPECT_FALSE(standsAlone(snapshot({true, true, true}), read({"a", "a", "b"}))) << "likewise: of two one counts";
    EXPECT_FALSE(standsAlone(snapshot({true, false, true}), read({"a", "b", "c"})));
    EXPECT_FALSE(standsAlone(snapshot({}), read({"a", "b", "c"})))
        << "what is told without a picture follows from before";
}

} // namespace
} // namespace pelloran::recording
