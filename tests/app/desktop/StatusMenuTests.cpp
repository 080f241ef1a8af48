#include "app/desktop/StatusMenu.h"

#include "tests/fakes/FakeSystemSettings.h"
#include "tests/fakes/FakeUserDefaults.h"
#include "tests/support/Printing.h"

#include <QApplication>
#include <QMenu>
#include <QTest>

#include <gtest/gtest.h>

namespace pelloran {
namespace {

using Action = StatusMenuEntry::Action;

class StatusMenuTest : public ::testing::Test {
protected:
    void SetUp() override { AppLanguage::configure(&defaults, &settings); }

    void TearDown() override { AppLanguage::configure(nullptr, nullptr); }

    testing::FakeUserDefaults defaults;
    testing::FakeSystemSettings settings;
};

TEST_F(StatusMenuTest, HasEightEntriesInBothLanguages) {
    struct Row {
        const char* why;
        const char* chinese;
        const char* english;
        const char* key;
        Action action;
        bool enabled;
    };

    const Row rows[] = {
        {"the panel", "显示/隐藏悬浮窗", "Show/Hide Overlay", "o", Action::toggleOverlay, true},
        {"one tick", "立即刷新", "Refresh Now", "r", Action::refreshNow, true},
        {"one sync", "检查配置更新", "Check Config Update", "u", Action::checkConfigNow, true},
        {"one check", "检查应用更新", "Check App Update", "", Action::checkAppUpdateNow, true},
        {"separator", "", "", "", Action::none, true},
        {"opens its submenu", "语言 / Language", "Language", "", Action::none, true},
        {"separator", "", "", "", Action::none, true},
        {"the end", "退出 Pelloran", "Quit Pelloran", "q", Action::quit, true},
    };
    for (const AppLanguage language : {AppLanguage::zh, AppLanguage::en}) {
        AppLanguage::setPreference(language);
        const auto menu = statusMenu(language);
        ASSERT_EQ(menu.size(), std::size(rows));
        for (std::size_t i = 0; i < menu.size(); ++i) {
            SCOPED_TRACE(rows[i].why);
            EXPECT_EQ(menu[i].title,
                      QString::fromUtf8(language == AppLanguage::zh ? rows[i].chinese : rows[i].english));
            EXPECT_EQ(menu[i].keyEquivalent, QString::fromUtf8(rows[i].key));
            EXPECT_EQ(menu[i].action, rows[i].action);
            EXPECT_EQ(menu[i].enabled, rows[i].enabled);
            EXPECT_FALSE(menu[i].checked);
            EXPECT_EQ(menu[i].submenu.size(), i == 5 ? 3U : 0U);
        }
    }
}

TEST_F(StatusMenuTest, MarksTheLanguagePreferredNotTheOneItComesTo) {
    struct Case {
        const char* why;
        AppLanguage preference;
        const char* titles[3];
        int checked;
    };

    const Case cases[] = {
        {"the system speaks English", AppLanguage::system, {"System", "中文", "English"}, 0},
        {"Chinese", AppLanguage::zh, {"跟随系统", "中文", "English"}, 1},
        {"English, as the system", AppLanguage::en, {"System", "中文", "English"}, 2},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        AppLanguage::setPreference(c.preference);
        const auto languages = statusMenu(c.preference)[5].submenu;
        ASSERT_EQ(languages.size(), 3U);
        const char* values[] = {"system", "zh", "en"};
        for (int i = 0; i < 3; ++i) {
            const StatusMenuEntry& entry = languages[static_cast<std::size_t>(i)];
            EXPECT_EQ(entry.title, QString::fromUtf8(c.titles[i]));
            EXPECT_EQ(entry.representedObject, QString::fromUtf8(values[i]));
            EXPECT_EQ(entry.checked, i == c.checked);
            EXPECT_EQ(entry.action, Action::selectLanguage);
            EXPECT_EQ(entry.keyEquivalent, QString());
        }
    }
}

class StatusMenuWidget : public StatusMenuTest {
protected:
    void TearDown() override {
        menu.reset();
        StatusMenuTest::TearDown();
    }

    void open() {
        menu = makeStatusMenu(statusMenu(AppLanguage::system), [this](const StatusMenuEntry& entry) {
            EXPECT_EQ(QApplication::activePopupWidget(), nullptr) << "the menu has closed";
            chosen.push_back(entry);
        });
        menu->popup(QPoint(20, 20));
        ASSERT_TRUE(QTest::qWaitFor([this] { return menu->isVisible(); }));
    }

    std::unique_ptr<QMenu> menu;
    std::vector<StatusMenuEntry> chosen;
};

TEST_F(StatusMenuWidget, ShowsTheEntries) {
    open();
    const auto actions = menu->actions();
    ASSERT_EQ(actions.size(), 8);
    EXPECT_EQ(actions[0]->text(), QStringLiteral("Show/Hide Overlay"));
    EXPECT_EQ(actions[0]->shortcut(), QKeySequence(Qt::CTRL | Qt::Key_O));
    EXPECT_TRUE(actions[2]->isEnabled());
    EXPECT_TRUE(actions[4]->isSeparator());
    ASSERT_NE(actions[5]->menu(), nullptr);
    const auto languages = actions[5]->menu()->actions();
    ASSERT_EQ(languages.size(), 3);
    EXPECT_TRUE(languages[0]->isChecked());
    EXPECT_FALSE(languages[1]->isChecked());
}

TEST_F(StatusMenuWidget, ServesClicks) {
    open();
    QTest::mouseClick(menu.get(), Qt::LeftButton, {}, menu->actionGeometry(menu->actions()[1]).center());
    ASSERT_EQ(chosen.size(), 1U);
    EXPECT_EQ(chosen[0].action, Action::refreshNow);
}

TEST_F(StatusMenuWidget, ServesItsKeysWhileOpen) {
    struct Case {
        const char* why;
        Qt::Key key;
        Qt::KeyboardModifiers modifiers;
        Action action; // none: nothing happens
    };

    const Case cases[] = {
        {"the panel", Qt::Key_O, Qt::ControlModifier, Action::toggleOverlay},
        {"a tick", Qt::Key_R, Qt::ControlModifier, Action::refreshNow},
        {"the end", Qt::Key_Q, Qt::ControlModifier, Action::quit},
        {"a sync", Qt::Key_U, Qt::ControlModifier, Action::checkConfigNow},
        {"another modifier as well", Qt::Key_R, Qt::ControlModifier | Qt::ShiftModifier, Action::none},
        {"no modifier", Qt::Key_F5, Qt::NoModifier, Action::none},
    };
    for (const Case& c : cases) {
        for (const bool inSubmenu : {false, true}) {
            SCOPED_TRACE(c.why);
            chosen.clear();
            open();
            if (inSubmenu) {
                menu->setActiveAction(menu->actions()[5]);
                QTest::keyClick(menu.get(), Qt::Key_Right);
                ASSERT_TRUE(QTest::qWaitFor([this] { return menu->actions()[5]->menu()->isVisible(); }));
            }
            QTest::keyClick(QApplication::activePopupWidget(), c.key, c.modifiers);
            EXPECT_EQ(chosen.size(), c.action == Action::none ? 0U : 1U);
            if (!chosen.empty()) {
                EXPECT_EQ(chosen[0].action, c.action);
            }
            EXPECT_EQ(menu->isVisible(), chosen.empty());
        }
    }
}

} // namespace
} // namespace pelloran
