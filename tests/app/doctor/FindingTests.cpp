#include "app/doctor/Finding.h"

#include "tests/support/Printing.h"

#include <gtest/gtest.h>

namespace pelloran {
namespace {

using State = Finding::State;

QString text(const char* utf8) {
    return QString::fromUtf8(utf8);
}

TEST(Finding, IsALineForPeople) {
    struct Case {
        const char* why;
        Finding finding;
        const char* line;
    };

    const Case cases[] = {
        {"nothing to do", {text("fonts"), State::ok, text("There is one."), {}, {}}, "ok       fonts: There is one.\n"},
        {"all there is to say",
         {text("tray"), State::note, text("None."), text("No icon."), text("Click the panel.")},
         "note     tray: None. No icon. Click the panel.\n"},
        {"names from outside with line breaks, and with what terminals obey",
         {text("logs"), State::problem, text("a\nb\x1B[31m c\r."), {}, text("炉石.")},
         "problem  logs: a b [31m c . 炉石.\n"},
        {"a name that would turn the rest of the line round",
         {text("logs"), State::problem, text("a\u202E b\u2028c."), {}, {}},
         "problem  logs: a  b c.\n"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(lineFor(c.finding), QByteArray(c.line)) << c.why;
    }
}

TEST(Finding, IsWrappedForATerminal) {
    struct Case {
        const char* why;
        Finding finding;
        int columns;
        const char* lines;
    };

    const Case cases[] = {
        {"fits", {text("fonts"), State::ok, text("There is one."), {}, {}}, 40, "ok       fonts: There is one.\n"},
        {"each of the three begins a line",
         {text("tray"), State::note, text("None."), text("No icon."), text("Click the panel.")},
         80,
         "note     tray: None.\n         No icon.\n         Click the panel.\n"},
        {"one of them is missing",
         {text("tray"), State::note, text("None."), {}, text("Click.")},
         80,
         "note     tray: None.\n         Click.\n"},
        {"just fits", {text("a"), State::ok, text("b cde"), {}, {}}, 17, "ok       a: b cde\n"},
        {"a column too many", {text("a"), State::ok, text("b cde"), {}, {}}, 16, "ok       a: b\n         cde\n"},
        {"a word that is wider than all stands alone",
         {text("a"), State::ok, text("/very/long/path/of/a/file is there"), {}, {}},
         20,
         "ok       a:\n         /very/long/path/of/a/file\n         is there\n"},
        {"Chinese is twice as wide",
         {text("a"), State::ok, text("b 炉石"), {}, {}},
         17,
         "ok       a: b\n         炉石\n"},
        {"what terminals obey", {text("a"), State::ok, text("b\x1B[2J\nc"), {}, {}}, 40, "ok       a: b [2J c\n"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(linesFor(c.finding, c.columns), QByteArray(c.lines)) << c.why;
    }
}

TEST(Finding, IsTheSameAfterJson) {
    for (const State state : {State::ok, State::note, State::problem}) {
        const Finding finding{text("check"), state, text("what"), text("meaning"), text("advice")};
        EXPECT_EQ(findingFromJson(toJson(finding)), finding);
    }
}

TEST(Finding, IsNoneOfOtherJson) {
    const QJsonObject good = toJson({text("check"), State::ok, text("what"), {}, {}});
    ASSERT_TRUE(findingFromJson(good));
    for (const char* key : {"check", "state", "what"}) {
        QJsonObject bad = good;
        bad.remove(text(key));
        EXPECT_FALSE(findingFromJson(bad)) << key << " is missing";
        bad.insert(text(key), 1);
        EXPECT_FALSE(findingFromJson(bad)) << key << " is a number";
    }
    EXPECT_FALSE(findingFromJson({}));
}

TEST(Finding, OfAProblemFailsTheCommand) {
    const Finding ok{text("a"), State::ok, text("."), {}, {}};
    const Finding note{text("b"), State::note, text("."), {}, {}};
    const Finding problem{text("c"), State::problem, text("."), {}, {}};
    EXPECT_EQ(exitCodeFor({}), 0);
    EXPECT_EQ(exitCodeFor({ok, note}), 0);
    EXPECT_EQ(exitCodeFor({ok, problem, note}), 1);
}

} // namespace
} // namespace pelloran
