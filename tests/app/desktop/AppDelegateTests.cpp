#include "tests/app/desktop/AppDelegateTest.h"

#include <QApplication>
#include <QPalette>

#include <gmock/gmock.h>

namespace pelloran {
namespace {

using Action = StatusMenuEntry::Action;
using ::testing::ElementsAre;

class Receiver final : public DraftServiceDelegate {
public:
    void draftServiceDidUpdate(const OverlaySnapshot& snapshot) override { snapshots.push_back(snapshot); }

    std::vector<OverlaySnapshot> snapshots;
};

TEST_F(AppDelegateTest, StartsInItsOrder) {
    withMenuIcon();
    launch();
    EXPECT_EQ(steps, (QStringList{
                         QStringLiteral("presence begun"),
                         QStringLiteral("panel made"),
                         QStringLiteral("image"),
                         QStringLiteral("tooltip"),
                         QStringLiteral("menu"),
                         QStringLiteral("panel opened"),
                         QStringLiteral("program activated"),
                         QStringLiteral("snapshot Waiting for Arena draft…"), // of the first tick
                         QStringLiteral("snapshot ") + bootEnglish,
                         QStringLiteral("log boot cards=") + store.metaDescription() + QStringLiteral("; source=") +
                             store.cardsSourceDescription() + QStringLiteral("; lang=en"),
                     }));
    EXPECT_EQ(item.toolTip, QStringLiteral("Pelloran · Hearthstone helper"));
    EXPECT_EQ(item.menu, statusMenu(AppLanguage::system));
    EXPECT_TRUE(panel.visible);
    EXPECT_TRUE(alerts.shown.empty());
    EXPECT_TRUE(exitCodes.empty());
}

TEST_F(AppDelegateTest, ComesForwardWhenTheDesktopOpensItAgain) {
    launch();
    delegate->toggleOverlay();
    ASSERT_FALSE(panel.visible);
    steps.clear();
    presence.reopened();
    EXPECT_EQ(steps, (QStringList{QStringLiteral("panel shown"), QStringLiteral("program activated")}));
    delegate->applicationWillTerminate();
    EXPECT_FALSE(presence.reopened) << "nobody is left to be called";
}

TEST_F(AppDelegateTest, SaysInWhichLanguageItStarts) {
    settings.languages = {QStringLiteral("zh-Hant-TW")};
    launch();
    EXPECT_TRUE(steps.last().endsWith(QStringLiteral("; lang=zh")));
    EXPECT_EQ(lastMessage(), bootChinese);
}

TEST_F(AppDelegateTest, ShowsTheBootLineEvenInADraftUntilTheNextTick) {
    beginDraft();
    launch();
    EXPECT_EQ(lastMessage(), bootEnglish);
    queue.finishNext();
    EXPECT_EQ(lastMessage(), QStringLiteral("In Arena, but Hearthstone window not found"));
}

TEST_F(AppDelegateTest, SaysWhyTheDataCannotBeLoadedAndEnds) {
    write("resources/winrates/all_classes_LAST_7_DAYS.json", "no figures");
    alerts.whenShown = [this] {
        EXPECT_TRUE(panel.visible) << "the panel stands already";
        EXPECT_TRUE(exitCodes.empty()) << "the end waits for the user";
    };
    launch();
    ASSERT_EQ(alerts.shown.size(), 1U);
    EXPECT_EQ(alerts.shown[0].style, Alerts::Style::critical);
    EXPECT_EQ(alerts.shown[0].messageText, QStringLiteral("Failed to load win-rate data"));
    EXPECT_FALSE(alerts.shown[0].informativeText.isEmpty());
    EXPECT_THAT(exitCodes, ElementsAre(1));
    EXPECT_TRUE(panel.snapshots.empty()) << "nothing runs";
    ASSERT_TRUE(steps.last().startsWith(QStringLiteral("log Failed to load win-rate data: ")));
    EXPECT_TRUE(steps.last().contains(alerts.shown[0].informativeText));

    EXPECT_TRUE(item.choose(Action::refreshNow));
    AppLanguage::setPreference(AppLanguage::zh);
    EXPECT_TRUE(panel.snapshots.empty()) << "what is left of the program does not stumble over what was never made";
}

TEST_F(AppDelegateTest, ServesTheUserWhileTheAlertIsUp) {
    write("resources/winrates/all_classes_LAST_7_DAYS.json", "no figures");
    alerts.whenShown = [this] {
        EXPECT_TRUE(item.choose(Action::refreshNow));
        EXPECT_TRUE(item.choose(Action::selectLanguage, QStringLiteral("zh")));
        EXPECT_EQ(item.menu, statusMenu(AppLanguage::zh)) << "though nothing follows the language yet";
        settings.setReducesMotion(true);
        EXPECT_EQ(panel.settingsChanges, 1);
        EXPECT_TRUE(item.choose(Action::toggleOverlay));
        EXPECT_FALSE(panel.visible);
        delegate->applicationShouldHandleReopen();
        EXPECT_TRUE(panel.visible) << "a second start meanwhile";
        EXPECT_TRUE(item.choose(Action::quit));
    };
    launch();
    EXPECT_EQ(alerts.shown.size(), 1U);
    EXPECT_THAT(exitCodes, ElementsAre(0, 1)) << "the failure has the last word";
    EXPECT_TRUE(panel.snapshots.empty());
}

TEST_F(AppDelegateTest, MayBeTerminatedWhileTheAlertIsUp) {
    write("resources/winrates/all_classes_LAST_7_DAYS.json", "no figures");
    alerts.whenShown = [this] { delegate->applicationWillTerminate(); };
    launch();
    EXPECT_THAT(exitCodes, ElementsAre(1));
    EXPECT_TRUE(item.choose(Action::toggleOverlay));
    EXPECT_TRUE(panel.visible);
    EXPECT_TRUE(panel.snapshots.empty());
}

TEST_F(AppDelegateTest, TogglesThePanel) {
    launch();
    EXPECT_TRUE(item.choose(Action::toggleOverlay));
    EXPECT_FALSE(panel.visible);
    EXPECT_TRUE(item.choose(Action::toggleOverlay));
    EXPECT_TRUE(panel.visible);
}

TEST_F(AppDelegateTest, RefreshesWithOneTick) {
    launch();
    const auto before = panel.snapshots.size();
    EXPECT_TRUE(item.choose(Action::refreshNow));
    EXPECT_EQ(panel.snapshots.size(), before + 1);
    EXPECT_EQ(lastMessage(), bootEnglish) << "which is the idle line from now on";
}

TEST_F(AppDelegateTest, QuitsFromTheMenu) {
    launch();
    EXPECT_TRUE(item.choose(Action::quit));
    EXPECT_THAT(exitCodes, ElementsAre(0));
}

TEST_F(AppDelegateTest, SpeaksTheLanguageChosen) {
    launch();
    EXPECT_TRUE(item.choose(Action::selectLanguage, QStringLiteral("zh")));
    EXPECT_EQ(defaults.string(QStringLiteral("pelloran.language")), QStringLiteral("zh"));
    EXPECT_EQ(item.menu, statusMenu(AppLanguage::zh));
    EXPECT_EQ(item.menu[0].title, QStringLiteral("显示/隐藏悬浮窗"));
    EXPECT_EQ(item.toolTip, QStringLiteral("Pelloran · 炉石传说助手"));
    ASSERT_GE(panel.snapshots.size(), 2U);
    EXPECT_EQ((panel.snapshots.end() - 2)->message, bootChinese) << "the idle line";
    EXPECT_EQ(panel.snapshots.back(), OverlaySnapshot::idle(bootChinese)) << "and the tick that follows";
}

TEST_F(AppDelegateTest, RebuildsTheMenuOnlyWhenTheLanguageStaysTheSame) {
    launch();
    const auto before = panel.snapshots.size();
    const int menus = item.menus;
    int posted = 0;
    const auto counting =
        QObject::connect(&AppLanguageNotifier::shared(), &AppLanguageNotifier::posted, [&posted] { ++posted; });
    EXPECT_TRUE(item.choose(Action::selectLanguage, QStringLiteral("system")));
    EXPECT_EQ(posted, 0);
    EXPECT_EQ(item.menus, menus + 1);
    EXPECT_EQ(panel.snapshots.size(), before);

    delegate->selectLanguage(QStringLiteral("fr"));
    EXPECT_EQ(item.menus, menus + 1) << "no language of ours";
    QObject::disconnect(counting);
}

TEST_F(AppDelegateTest, FollowsALanguageThatOthersChoose) {
    launch();
    AppLanguage::setPreference(AppLanguage::zh);
    EXPECT_EQ(item.menu, statusMenu(AppLanguage::zh));
    EXPECT_EQ(lastMessage(), bootChinese);
}

TEST_F(AppDelegateTest, MarksADraftInTheTitleWhereThereIsNoIcon) {
    launch();
    EXPECT_EQ(item.title, QStringLiteral("PL"));
    beginDraft();
    delegate->refreshNow();
    queue.finishNext();
    EXPECT_EQ(item.title, QStringLiteral("PL●"));
    endDraft();
    delegate->refreshNow();
    EXPECT_EQ(item.title, QStringLiteral("PL"));
}

TEST_F(AppDelegateTest, TakesAnIconThatDoesNotLoadForNone) {
    write("resources/MenuIcon.png", "no picture");
    launch();
    EXPECT_EQ(item.title, QStringLiteral("PL"));
}

TEST_F(AppDelegateTest, LeavesAnIconAlone) {
    withMenuIcon();
    beginDraft();
    launch();
    queue.finishNext();
    EXPECT_TRUE(panel.snapshots.back().inDraft);
    EXPECT_TRUE(item.title.isEmpty());
}

TEST_F(AppDelegateTest, HandsEverySnapshotOfTheServiceOn) {
    const auto receiver = std::make_shared<Receiver>();
    alsoReceives = receiver;
    launch();
    delegate->refreshNow();
    ASSERT_EQ(receiver->snapshots.size(), 2U) << "the boot line is for the panel alone";
    EXPECT_EQ(receiver->snapshots[0].message, QStringLiteral("Waiting for Arena draft…"));
    EXPECT_EQ(receiver->snapshots[1].message, bootEnglish);
}

TEST_F(AppDelegateTest, ShowsThePanelWhenStartedAgain) {
    launch();
    delegate->toggleOverlay();
    ASSERT_FALSE(panel.visible);
    delegate->applicationShouldHandleReopen();
    EXPECT_TRUE(panel.visible);
    delegate->applicationShouldHandleReopen();
    EXPECT_TRUE(panel.visible) << "never hidden by it";
}

TEST_F(AppDelegateTest, OpensTheMenuOnARightClickOfThePanel) {
    launch();
    ASSERT_NE(panel.contextMenu, nullptr);
    (*panel.contextMenu)(QPoint(70, 80));
    EXPECT_THAT(item.openedAt, ElementsAre(QPoint(70, 80)));
}

TEST_F(AppDelegateTest, StopsEverythingOnTermination) {
    beginDraft();
    launch();
    ASSERT_EQ(queue.waiting(), 1U);
    const auto before = panel.snapshots.size();
    const int menus = item.menus;
    delegate->applicationWillTerminate();
    queue.finishNext();
    AppLanguage::setPreference(AppLanguage::zh);
    EXPECT_TRUE(item.choose(Action::toggleOverlay));
    settings.setReducesMotion(true);
    delegate->applicationWillTerminate();
    EXPECT_EQ(panel.snapshots.size(), before);
    EXPECT_EQ(item.menus, menus);
    EXPECT_EQ(panel.settingsChanges, 0);
    EXPECT_TRUE(panel.visible);
}

TEST_F(AppDelegateTest, FollowsTheLookOfTheDesktop) {
    launch();
    const QPalette before = QApplication::palette();
    settings.setAppearance(Appearance::dark);
    EXPECT_EQ(panel.settingsChanges, 1);
    EXPECT_LT(QApplication::palette().color(QPalette::Window).lightness(), 100);
    settings.setReducesMotion(true);
    EXPECT_EQ(panel.settingsChanges, 2);
    settings.setAppearance(std::nullopt);
    EXPECT_EQ(QApplication::palette().color(QPalette::Window), before.color(QPalette::Window));
}

TEST_F(AppDelegateTest, IsHeldWeaklyByItsService) {
    launch();
    const std::weak_ptr<AppDelegate> watched = delegate;
    delegate.reset();
    EXPECT_TRUE(watched.expired());
    EXPECT_EQ(panel.contextMenu, nullptr) << "the panel goes with it";
}

} // namespace
} // namespace pelloran
