#include "platform/freedesktop/GnomeAnimations.h"

#include "tests/platform/freedesktop/Patience.h"

#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

namespace pelloran::freedesktop {

namespace {

using testing::desktopPatience;

TEST(IsGnome, LooksForItsNameInTheList) {
    struct Case {
        const char* why;
        const char16_t* desktop;
        bool expected;
    };

    const Case cases[] = {
        {"none", u"", false},
        {"alone", u"GNOME", true},
        {"after the distribution", u"ubuntu:GNOME", true},
        {"before a variant", u"GNOME-Flashback:GNOME", true},
        {"other letters", u"gnome", true},
        {"another desktop", u"KDE", false},
        {"a part of a name", u"GNOMEish", false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        EXPECT_EQ(isGnome(c.desktop), c.expected);
    }
}

// Stands for the desktop's tool.
class GnomeAnimationsTest : public ::testing::Test {
protected:
    QString tool(const QByteArray& script) const {
        QFile file(folder.filePath(QStringLiteral("tool")));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("#!/bin/sh\n" + script);
        file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        return file.fileName();
    }

    const QTemporaryDir folder;
};

TEST_F(GnomeAnimationsTest, TakesTheToolsWord) {
    struct Case {
        const char* why;
        QByteArray script;
        std::optional<bool> expected;
        std::chrono::milliseconds patience = GnomeAnimations::usualPatience;
    };

    const Case cases[] = {
        {"off", "echo false", false},
        {"on", "echo true", true},
        {"asks for the right key", "[ \"$*\" = 'get org.gnome.desktop.interface enable-animations' ] && echo false",
         false},
        {"another word", "echo maybe", std::nullopt},
        {"nothing", "", std::nullopt},
        {"it fails", "echo false; exit 1", std::nullopt},
        {"no such key, with a complaint", "echo 'No such key' >&2; exit 1", std::nullopt},
        {"it crashes", "kill -9 $$", std::nullopt},
        {"it hangs", "exec sleep 60", std::nullopt, std::chrono::milliseconds(100)},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        int answers = 0;
        std::optional<bool> answer;
        const GnomeAnimations animations(
            [&](std::optional<bool> enabled) {
                ++answers;
                answer = enabled;
            },
            tool(c.script), c.patience);
        EXPECT_TRUE(QTest::qWaitFor([&] { return answers > 0; }, desktopPatience));
        EXPECT_EQ(answer, c.expected);
        EXPECT_EQ(answers, 1);
    }
}

TEST_F(GnomeAnimationsTest, AMissingToolKnowsNothing) {
    std::optional<std::optional<bool>> answer;
    const GnomeAnimations animations([&](std::optional<bool> enabled) { answer = enabled; },
                                     folder.filePath(QStringLiteral("missing")));
    EXPECT_TRUE(QTest::qWaitFor([&] { return answer.has_value(); }, desktopPatience));
    EXPECT_EQ(answer.value_or(true), std::nullopt);
}

TEST_F(GnomeAnimationsTest, AToolThatStillRunsIsEnded) {
    QElapsedTimer time;
    time.start();
    {
        const GnomeAnimations animations([](std::optional<bool>) { ADD_FAILURE() << "answered after its end"; },
                                         tool("exec sleep 60"));
        QTest::qWait(20);
    }
    EXPECT_LT(time.elapsed(), desktopPatience);
}

} // namespace

} // namespace pelloran::freedesktop
