#include "platform/SystemSettings.h"

#include "platform/freedesktop/PortalNames.h"
#include "platform/LocaleSystemSettings.h"
#include "tests/platform/freedesktop/FakePortal.h"
#include "tests/platform/freedesktop/Patience.h"

#include <QTest>

#include <gtest/gtest.h>

namespace pelloran::testing {

namespace {

// The session's bus is looked up once in a run, so there is one case for it.
TEST(DesktopSystemSettings, FollowsTheSessionsPortal) {
    if (!PrivateBus::isInstalled()) {
        GTEST_SKIP() << "needs dbus-daemon, which is not installed";
    }
    const auto bus = PrivateBus::start();
    ASSERT_TRUE(bus);
    qputenv("DBUS_SESSION_BUS_ADDRESS", bus->address().toLatin1());
    FakePortal portal(bus->address(), {{freedesktop::appearanceGroup,
                                        {{freedesktop::colorSchemeKey, 1U}, {freedesktop::reducedMotionKey, 0U}}}});

    const auto settings = SystemSettings::create();
    int changes = 0;
    settings->changed = [&] { ++changes; };
    EXPECT_EQ(settings->preferredLanguages(), LocaleSystemSettings().preferredLanguages());
    EXPECT_EQ(settings->localeIdentifier(), LocaleSystemSettings().localeIdentifier());
    QTest::qWait(50);
    EXPECT_EQ(portal.questions, 0) << "for the language alone nobody is asked";

    EXPECT_FALSE(settings->appearance());
    EXPECT_TRUE(QTest::qWaitFor([&] { return settings->appearance() == Appearance::dark; }, desktopPatience));
    portal.change(freedesktop::appearanceGroup, freedesktop::reducedMotionKey, 1U);
    EXPECT_TRUE(QTest::qWaitFor([&] { return settings->reducesMotion(); }, desktopPatience));
    EXPECT_EQ(changes, 2);
}

} // namespace

} // namespace pelloran::testing
