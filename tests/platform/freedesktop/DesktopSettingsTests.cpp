#include "platform/freedesktop/DesktopSettings.h"

#include "platform/freedesktop/PortalNames.h"
#include "tests/platform/freedesktop/FakePortal.h"
#include "tests/platform/freedesktop/Patience.h"
#include "tests/support/SilentSocket.h"

#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

#include <functional>
#include <memory>

namespace pelloran::testing {

namespace {

using namespace freedesktop;

bool inTime(const std::function<bool()>& condition) {
    return QTest::qWaitFor(condition, desktopPatience);
}

PortalGroups groups(uint colorScheme, uint reducedMotion) {
    return {{appearanceGroup, {{colorSchemeKey, colorScheme}, {reducedMotionKey, reducedMotion}}}};
}

class DesktopSettingsTest : public ::testing::Test {
protected:
    void SetUp() override {
        if (!PrivateBus::isInstalled()) {
            GTEST_SKIP() << "needs dbus-daemon, which is not installed";
        }
        bus = PrivateBus::start();
        ASSERT_TRUE(bus) << "dbus-daemon does not start";
    }

    void writeKdeFactor(const QByteArray& factor) const {
        QFile file(kdeGlobals);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("[KDE]\nAnimationDurationFactor=" + factor + "\n");
    }

    void follow() { follow(bus->address()); }

    void follow(const QString& address) {
        settings = std::make_unique<DesktopSettings>(
            DesktopPlaces{.busAddress = address, .kdeGlobals = kdeGlobals, .portalPatience = portalPatience});
        settings->changed = [this] { ++changes; };
    }

    bool becomes(std::optional<Appearance> appearance, bool reducesMotion) const {
        return inTime(
            [&] { return settings->appearance() == appearance && settings->reducesMotion() == reducesMotion; });
    }

    const QTemporaryDir folder;
    const QString kdeGlobals = folder.filePath(QStringLiteral("kdeglobals"));
    std::unique_ptr<PrivateBus> bus;
    std::unique_ptr<DesktopSettings> settings;
    std::chrono::milliseconds portalPatience = PortalSettings::usualPatience;
    int changes = 0;
};

TEST_F(DesktopSettingsTest, TakesThePortalsAnswer) {
    const FakePortal portal(bus->address(), groups(1, 1));
    follow();
    EXPECT_FALSE(settings->appearance()) << "it does not wait";
    EXPECT_FALSE(settings->reducesMotion());
    EXPECT_TRUE(becomes(Appearance::dark, true));
    EXPECT_EQ(changes, 1);
    EXPECT_EQ(portal.askedFor, (QStringList{appearanceGroup, gnomeGroup, kdeGroup}));
}

TEST_F(DesktopSettingsTest, FollowsThePortal) {
    FakePortal portal(bus->address(), groups(1, 0));
    follow();
    ASSERT_TRUE(becomes(Appearance::dark, false));
    portal.change(appearanceGroup, colorSchemeKey, 2U);
    EXPECT_TRUE(becomes(Appearance::light, false));
    portal.change(appearanceGroup, reducedMotionKey, 1U);
    EXPECT_TRUE(becomes(Appearance::light, true));
    portal.change(appearanceGroup, reducedMotionKey, 0U);
    EXPECT_TRUE(becomes(Appearance::light, false));
    portal.change(gnomeGroup, gnomeAnimationsKey, false);
    EXPECT_TRUE(becomes(Appearance::light, true));
    portal.change(gnomeGroup, gnomeAnimationsKey, true);
    EXPECT_TRUE(becomes(Appearance::light, false));
    portal.change(kdeGroup, kdeDurationKey, QStringLiteral("0"));
    EXPECT_TRUE(becomes(Appearance::light, true));
    portal.change(appearanceGroup, colorSchemeKey, 0U);
    EXPECT_TRUE(becomes(std::nullopt, true));
    EXPECT_EQ(changes, 8);
    EXPECT_EQ(portal.questions, 1);
}

TEST_F(DesktopSettingsTest, WhatDoesNotMatterIsNoChange) {
    FakePortal portal(bus->address(), groups(1, 1));
    follow();
    ASSERT_TRUE(becomes(Appearance::dark, true));
    portal.change(QStringLiteral("org.example"), colorSchemeKey, 2U);
    portal.change(appearanceGroup, QStringLiteral("contrast"), 1U);
    portal.change(gnomeGroup, gnomeAnimationsKey, false);
    portal.change(appearanceGroup, colorSchemeKey, 2U);
    EXPECT_TRUE(becomes(Appearance::light, true));
    EXPECT_EQ(changes, 2);
}

TEST_F(DesktopSettingsTest, ValuesWrappedTwiceAreUnwrapped) {
    auto wrapped = groups(0, 0);
    wrapped[appearanceGroup][colorSchemeKey] = QVariant::fromValue(QDBusVariant(1U));
    FakePortal portal(bus->address(), wrapped);
    follow();
    EXPECT_TRUE(becomes(Appearance::dark, false));
    portal.change(appearanceGroup, colorSchemeKey, QVariant::fromValue(QDBusVariant(2U)));
    EXPECT_TRUE(becomes(Appearance::light, false));
}

TEST_F(DesktopSettingsTest, SignalsOfOddTypesAreNothing) {
    FakePortal portal(bus->address(), groups(1, 0));
    follow();
    ASSERT_TRUE(becomes(Appearance::dark, false));
    portal.emitSignal({});
    portal.emitSignal({appearanceGroup, colorSchemeKey});
    portal.emitSignal({appearanceGroup, colorSchemeKey, 2U});
    portal.emitSignal({1, 2, 3});
    portal.emitSignal({appearanceGroup, reducedMotionKey, QVariant::fromValue(QDBusVariant(QVariantMap()))});
    portal.change(appearanceGroup, reducedMotionKey, 1U);
    EXPECT_TRUE(becomes(Appearance::dark, true));
    EXPECT_EQ(changes, 2);
}

TEST_F(DesktopSettingsTest, OnlyThePortalIsBelieved) {
    FakePortal portal(bus->address(), groups(1, 0));
    follow();
    ASSERT_TRUE(becomes(Appearance::dark, false));
    FakePortal other(bus->address(), groups(2, 1)); // the name is taken
    other.change(appearanceGroup, reducedMotionKey, 1U);
    portal.change(appearanceGroup, colorSchemeKey, 2U);
    EXPECT_TRUE(becomes(Appearance::light, false));
}

TEST_F(DesktopSettingsTest, WithoutAPortalKdesFileCounts) {
    writeKdeFactor("0");
    follow();
    EXPECT_TRUE(becomes(std::nullopt, true));
    writeKdeFactor("1");
    EXPECT_TRUE(becomes(std::nullopt, false));
    EXPECT_EQ(changes, 2);
}

TEST_F(DesktopSettingsTest, APortalThatIsOfNoUseLeavesItToKdesFile) {
    struct Case {
        const char* why;
        FakePortal::Manner manner;
    };

    writeKdeFactor("0");
    for (const Case& c :
         {Case{"an error", FakePortal::Manner::refuses}, Case{"another type", FakePortal::Manner::talksNonsense},
          Case{"no answer at all", FakePortal::Manner::isSilent}}) {
        SCOPED_TRACE(c.why);
        const FakePortal portal(bus->address(), groups(1, 0), c.manner);
        portalPatience = std::chrono::milliseconds(c.manner == FakePortal::Manner::isSilent ? 100 : 10'000);
        follow();
        EXPECT_TRUE(becomes(std::nullopt, true));
        settings.reset();
    }
}

TEST_F(DesktopSettingsTest, APortalThatKnowsOnlyColoursLeavesMotionToKdesFile) {
    writeKdeFactor("0");
    const FakePortal portal(bus->address(), {{appearanceGroup, {{colorSchemeKey, 2U}}}});
    follow();
    EXPECT_TRUE(becomes(Appearance::light, true));
}

TEST_F(DesktopSettingsTest, APortalThatKnowsOfMotionIsBelievedOverKdesFile) {
    writeKdeFactor("0");
    const FakePortal portal(bus->address(), groups(1, 0));
    follow();
    EXPECT_TRUE(becomes(Appearance::dark, false));
    EXPECT_EQ(changes, 1);
}

TEST_F(DesktopSettingsTest, APortalThatComesLateOrAgainIsTaken) {
    follow();
    QTest::qWait(50);
    auto portal = std::make_unique<FakePortal>(bus->address(), groups(1, 1));
    EXPECT_TRUE(becomes(Appearance::dark, true));
    portal.reset();
    EXPECT_TRUE(becomes(std::nullopt, false)) << "it died";
    portal = std::make_unique<FakePortal>(bus->address(), groups(2, 1));
    EXPECT_TRUE(becomes(Appearance::light, true)) << "it is back";
    portal->change(appearanceGroup, reducedMotionKey, 0U);
    EXPECT_TRUE(becomes(Appearance::light, false)) << "and followed";
}

TEST_F(DesktopSettingsTest, APortalThatDiesOverTheQuestionIsNone) {
    writeKdeFactor("0");
    auto portal = std::make_unique<FakePortal>(bus->address(), groups(1, 0), FakePortal::Manner::isSilent);
    follow();
    ASSERT_TRUE(inTime([&] { return portal->questions == 1; }));
    portal.reset();
    EXPECT_TRUE(becomes(std::nullopt, true));
}

TEST_F(DesktopSettingsTest, ABusThatDiesHurtsNothing) {
    const auto portal = std::make_unique<FakePortal>(bus->address(), groups(1, 1));
    follow();
    ASSERT_TRUE(becomes(Appearance::dark, true));
    bus.reset();
    QTest::qWait(100);
    EXPECT_EQ(settings->appearance(), Appearance::dark) << "nobody says otherwise";
}

TEST_F(DesktopSettingsTest, WithoutABusKdesFileCounts) {
    writeKdeFactor("0");
    for (const char* address : {"unix:path=/nowhere/bus", "nonsense", "tcp:host=127.0.0.1,port=1"}) {
        SCOPED_TRACE(address);
        follow(QString::fromLatin1(address));
        EXPECT_TRUE(becomes(std::nullopt, true));
    }
}

TEST_F(DesktopSettingsTest, ASilentBusIsNotWaitedFor) {
    const QString path = folder.filePath(QStringLiteral("bus"));
    SilentSocket silent(path);
    QElapsedTimer time;
    time.start();
    follow(QStringLiteral("unix:path=") + path);
    EXPECT_FALSE(settings->reducesMotion());
    QTest::qWait(100);
    EXPECT_LT(time.elapsed(), 5000);
    silent.end();
    settings.reset();
}

} // namespace

} // namespace pelloran::testing
