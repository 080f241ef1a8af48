#include "tests/contracts/SystemSettingsContract.h"

#include "platform/LocaleSystemSettings.h"
#include "tests/fakes/FakeSystemSettings.h"
#ifdef PELLORAN_WITH_FREEDESKTOP
#include "platform/freedesktop/PortalNames.h"
#include "tests/platform/freedesktop/FakePortal.h"
#endif

namespace pelloran::testing {

namespace {

using ::testing::Values;

ChangedSettings fakeSettings() {
    auto fake = std::make_unique<FakeSystemSettings>();
    auto* told = fake.get();
    told->setAppearance(Appearance::light);
    return {{},
            std::move(fake),
            [told](bool reduces) { told->setReducesMotion(reduces); },
            [told](Appearance appearance) { told->setAppearance(appearance); }};
}

// Also the whole of it where a build has no back end for its desktop.
ChangedSettings localeSettings() {
    return {{}, std::make_unique<LocaleSystemSettings>(), {}, {}};
}

#ifdef PELLORAN_WITH_FREEDESKTOP

// The session's bus is looked up once in a run, so all cases share one; it ends with the program.
struct Session {
    std::unique_ptr<PrivateBus> bus = PrivateBus::start();
    FakePortal portal{bus->address(), {}};
};

ChangedSettings desktopSettings() {
    using namespace freedesktop;
    if (!PrivateBus::isInstalled()) {
        return {};
    }
    static auto* const session = new Session;
    qputenv("DBUS_SESSION_BUS_ADDRESS", session->bus->address().toLatin1());
    const auto setReducesMotion = [](bool reduces) {
        session->portal.change(appearanceGroup, reducedMotionKey, reduces ? 1U : 0U);
    };
    const auto setAppearance = [](Appearance appearance) {
        session->portal.change(appearanceGroup, colorSchemeKey, appearance == Appearance::dark ? 1U : 2U);
    };
    setReducesMotion(false);
    setAppearance(Appearance::light);
    return {{}, SystemSettings::create(), setReducesMotion, setAppearance};
}

INSTANTIATE_TEST_SUITE_P(Desktop, SystemSettingsContract, Values(BackEnd<ChangedSettings>{"Portal", desktopSettings}),
                         nameOfBackEnd);

#endif

INSTANTIATE_TEST_SUITE_P(BackEnds, SystemSettingsContract,
                         Values(BackEnd<ChangedSettings>{"Locale", localeSettings},
                                BackEnd<ChangedSettings>{"Fake", fakeSettings}),
                         nameOfBackEnd);

} // namespace

} // namespace pelloran::testing
