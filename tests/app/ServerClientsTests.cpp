#include "app/ServerClients.h"

#include "platform/BundleVersion.h"
#include "tests/support/Printing.h"

#include <gtest/gtest.h>

namespace pelloran {

namespace {

TEST(LocalApplication, IsWhatTheBundleSaysElseWhatWasBuilt) {
    const QString built = QStringLiteral("0.1.0");
    const QString version = QStringLiteral("1.4.2");
    const QString build = QStringLiteral("77");

    struct Case {
        const char* why;
        BundleVersion bundle;
        std::optional<QString> expectedVersion;
        std::optional<QString> expectedBuild;
    };

    const Case cases[] = {
        {"no bundle", {}, built, std::nullopt},
        {"a bundle", {version, build}, version, build},
        {"a bundle without a build number", {version, std::nullopt}, version, std::nullopt},
        {"one that has a build number alone counts by that", {std::nullopt, build}, std::nullopt, build},
        {"one that says nothing of itself", {QString(), QString()}, built, std::nullopt},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        const auto application = localApplication(c.bundle, built);
        EXPECT_EQ(application.version, c.expectedVersion);
        EXPECT_EQ(application.build, c.expectedBuild);
    }
}

} // namespace

} // namespace pelloran
