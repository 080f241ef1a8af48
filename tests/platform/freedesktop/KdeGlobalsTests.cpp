#include "platform/freedesktop/KdeGlobals.h"

#include "tests/platform/freedesktop/Patience.h"

#include <QDir>
#include <QFile>
#include <QSaveFile>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

namespace pelloran::freedesktop {

namespace {

using testing::desktopPatience;

TEST(AnimationDurationFactor, IsFoundInItsGroup) {
    struct Case {
        const char* why;
        const char* contents;
        std::optional<double> expected;
    };

    const Case cases[] = {
        {"nothing", "", std::nullopt},
        {"plain", "[KDE]\nAnimationDurationFactor=0\n", 0.0},
        {"no line end", "[KDE]\nAnimationDurationFactor=0.5", 0.5},
        {"other keys around it", "[KDE]\nA=1\nAnimationDurationFactor=2\nB=3\n", 2.0},
        {"other groups around it", "[General]\nA=1\n\n[KDE]\nAnimationDurationFactor=0\n\n[Z]\nB=1\n", 0.0},
        {"another group's", "[General]\nAnimationDurationFactor=0\n", std::nullopt},
        {"a group inside of it", "[KDE][Part]\nAnimationDurationFactor=0\n", std::nullopt},
        {"no group", "AnimationDurationFactor=0\n", std::nullopt},
        {"fixed by the administrator", "[KDE][$i]\nAnimationDurationFactor[$i]=0\n", 0.0},
        {"spaces", "[KDE]\n AnimationDurationFactor = 0 \r\n", 0.0},
        {"the last one counts", "[KDE]\nAnimationDurationFactor=0\nAnimationDurationFactor=1\n", 1.0},
        {"no number", "[KDE]\nAnimationDurationFactor=fast\n", std::nullopt},
        {"not finite", "[KDE]\nAnimationDurationFactor=nan\n", std::nullopt},
        {"no value", "[KDE]\nAnimationDurationFactor=\nAnimationDurationFactor\n", std::nullopt},
        {"a comma is no point", "[KDE]\nAnimationDurationFactor=0,5\n", std::nullopt},
        {"in a comment", "[KDE]\n#AnimationDurationFactor=0\n", std::nullopt},
        {"odd bytes", "\xff\xfe[KDE\n]=\n[\n=", std::nullopt},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        EXPECT_EQ(animationDurationFactor(c.contents), c.expected);
    }
}

class KdeGlobalsTest : public ::testing::Test {
protected:
    void write(const QByteArray& contents) const {
        QFile file(name);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(contents);
    }

    void replace(const QByteArray& contents) const {
        QSaveFile file(name);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(contents);
        ASSERT_TRUE(file.commit());
    }

    static bool becomes(const KdeGlobals& globals, std::optional<double> expected) {
        return QTest::qWaitFor([&] { return globals.factor() == expected; }, desktopPatience);
    }

    const QTemporaryDir folder;
    const QString name = folder.filePath(QStringLiteral("kdeglobals"));
};

TEST_F(KdeGlobalsTest, FollowsAFileThroughItsLife) {
    KdeGlobals globals(name);
    int changes = 0;
    globals.changed = [&] { ++changes; };
    EXPECT_FALSE(globals.factor()) << "there is none yet";
    write("[KDE]\nAnimationDurationFactor=0\n");
    EXPECT_TRUE(becomes(globals, 0.0)) << "it came";
    replace("[KDE]\nAnimationDurationFactor=1\n");
    EXPECT_TRUE(becomes(globals, 1.0)) << "it was replaced";
    replace("[KDE]\nAnimationDurationFactor=0\n");
    EXPECT_TRUE(becomes(globals, 0.0)) << "it was replaced again";
    write("[KDE]\nAnimationDurationFactor=0.5\n");
    EXPECT_TRUE(becomes(globals, 0.5)) << "it was written to";
    ASSERT_TRUE(QFile::remove(name));
    EXPECT_TRUE(becomes(globals, std::nullopt)) << "it is gone";
    write("[KDE]\nAnimationDurationFactor=3\n");
    EXPECT_TRUE(becomes(globals, 3.0)) << "it came back";
    EXPECT_GE(changes, 6);
}

TEST_F(KdeGlobalsTest, ReadsWhatIsThereAtOnce) {
    write("[KDE]\nAnimationDurationFactor=0\n");
    EXPECT_EQ(KdeGlobals(name).factor(), 0.0);
}

TEST_F(KdeGlobalsTest, AFolderInItsPlaceOrNoFolderAtAllIsNoFile) {
    ASSERT_TRUE(QDir().mkpath(name));
    EXPECT_FALSE(KdeGlobals(name).factor());
    EXPECT_FALSE(KdeGlobals(name + QStringLiteral("/missing/kdeglobals")).factor());
}

} // namespace

} // namespace pelloran::freedesktop
