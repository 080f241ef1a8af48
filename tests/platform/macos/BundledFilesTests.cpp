#include "platform/macos/BundledFiles.h"

#include "tests/contracts/ApplicationFilesContract.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace pelloran::macos {

namespace {

class BundledFilesTest : public ::testing::Test {
protected:
    void write(const QString& path) const {
        const QString whole = folder.filePath(path);
        ASSERT_TRUE(QDir().mkpath(QFileInfo(whole).path()));
        QFile file(whole);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    }

    NativePlaces bundle() const {
        return {
            .applicationSupport = folder.filePath(QStringLiteral("home/Library/Application Support")),
            .bundleResources = folder.filePath(QStringLiteral("Pelloran.app/Contents/Resources")),
            .executableFolder = folder.filePath(QStringLiteral("Pelloran.app/Contents/MacOS")),
            .home = folder.filePath(QStringLiteral("home")),
        };
    }

    static std::optional<QString> icon(const BundledFiles& files) {
        return files.resource(QStringLiteral("MenuIcon"), QStringLiteral("png"), QString());
    }

    const QTemporaryDir folder;
    const QString inBundle = QStringLiteral("Pelloran.app/Contents/Resources/MenuIcon.png");
    const QString besideProgram = QStringLiteral("Pelloran.app/Contents/MacOS/resources/MenuIcon.png");
};

TEST_F(BundledFilesTest, TakesTheBundlesCopyBeforeTheOneBesideTheProgram) {
    const BundledFiles files(bundle());
    EXPECT_EQ(icon(files), std::nullopt) << "a bundle without resources";
    write(besideProgram);
    EXPECT_EQ(icon(files), folder.filePath(besideProgram));
    write(inBundle);
    EXPECT_EQ(icon(files), folder.filePath(inBundle));
}

TEST_F(BundledFilesTest, FindsWhatLiesBesideAProgramWithoutABundle) {
    NativePlaces places = bundle();
    places.bundleResources.reset();
    write(inBundle);
    write(besideProgram);
    EXPECT_EQ(icon(BundledFiles(places)), folder.filePath(besideProgram));
}

TEST_F(BundledFilesTest, DoesWithWhatTheSystemNames) {
    struct Case {
        const char* why;
        std::optional<QString> applicationSupport;
        QString expected;
    };

    const Case cases[] = {
        {"as it is named", QStringLiteral("/Users/a/Library/Application Support"),
         QStringLiteral("/Users/a/Library/Application Support")},
        {"with a slash at its end", QStringLiteral("/Users/a/Library/Application Support/"),
         QStringLiteral("/Users/a/Library/Application Support")},
        {"none", std::nullopt, QStringLiteral("/Users/b/Library/Application Support")},
        {"an empty one", QString(), QStringLiteral("/Users/b/Library/Application Support")},
        {"one that depends on where the program was started", QStringLiteral("Library"),
         QStringLiteral("/Users/b/Library/Application Support")},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        NativePlaces places = bundle();
        places.home = QStringLiteral("/Users/b/");
        places.applicationSupport = c.applicationSupport;
        places.bundleResources = QString(); // of no use either
        const BundledFiles files(places);
        EXPECT_EQ(files.applicationSupportFolder(), c.expected);
        EXPECT_EQ(files.configurationFolder(), c.expected + QStringLiteral("/Pelloran/config"));
        EXPECT_EQ(files.homeFolder(), QStringLiteral("/Users/b"));
        EXPECT_EQ(icon(files), std::nullopt);
    }
}

} // namespace

} // namespace pelloran::macos

namespace pelloran::testing {

namespace {

InstalledFiles inABundle() {
    auto folder = std::make_shared<QTemporaryDir>();
    const QString resources = folder->filePath(QStringLiteral("Pelloran.app/Contents/Resources"));
    auto files = std::make_unique<macos::BundledFiles>(macos::NativePlaces{
        .applicationSupport = folder->filePath(QStringLiteral("support")),
        .bundleResources = resources,
        .executableFolder = folder->filePath(QStringLiteral("Pelloran.app/Contents/MacOS")),
        .home = folder->path(),
    });
    return {std::move(folder), std::move(files), resources + QStringLiteral("/winrates"), QStringLiteral("winrates")};
}

INSTANTIATE_TEST_SUITE_P(Bundle, ApplicationFilesContract,
                         ::testing::Values(BackEnd<InstalledFiles>{"Bundle", inABundle}), nameOfBackEnd);

} // namespace

} // namespace pelloran::testing
