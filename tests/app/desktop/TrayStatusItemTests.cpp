#include "app/desktop/TrayStatusItem.h"

#include "tests/support/Printing.h"

#include <QApplication>
#include <QFile>
#include <QImage>
#include <QMenu>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

// Without a tray, as plain desktops are; the tray itself needs an X server.
namespace pelloran {
namespace {

using Action = StatusMenuEntry::Action;

class TrayStatusItemTest : public ::testing::Test {
protected:
    QSystemTrayIcon& icon() { return *item.findChild<QSystemTrayIcon*>(); }

    QMenu* openedMenu() { return qobject_cast<QMenu*>(QApplication::activePopupWidget()); }

    TrayStatusItem item;
};

TEST_F(TrayStatusItemTest, WaitsForATray) {
    EXPECT_FALSE(item.isAvailable());
    item.setTitle(QStringLiteral("PL"));
    EXPECT_FALSE(icon().isVisible());
    EXPECT_TRUE(item.findChild<QTimer*>()->isActive());
}

TEST_F(TrayStatusItemTest, PaintsItsTitle) {
    item.setTitle(QStringLiteral("PL"));
    EXPECT_FALSE(item.hasImage());
    const QImage idle = icon().icon().pixmap(18).toImage();
    item.setTitle(QStringLiteral("PL●"));
    const QImage draft = icon().icon().pixmap(18).toImage();
    EXPECT_EQ(idle.size(), QSize(18, 18));
    EXPECT_NE(idle, draft);
}

TEST_F(TrayStatusItemTest, ShowsAPictureInItsOwnColours) {
    const QTemporaryDir folder;
    QImage picture(18, 18, QImage::Format_RGB32);
    picture.fill(QColor(10, 200, 30));
    const QString path = folder.filePath(QStringLiteral("MenuIcon.png"));
    ASSERT_TRUE(picture.save(path));
    EXPECT_TRUE(item.setImage(path));
    EXPECT_TRUE(item.hasImage());
    EXPECT_EQ(icon().icon().pixmap(18).toImage().pixelColor(9, 9), QColor(10, 200, 30));
    EXPECT_FALSE(icon().icon().isMask());
}

TEST_F(TrayStatusItemTest, SaysWhenAPictureCannotBeLoaded) {
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("MenuIcon.png"));
    EXPECT_FALSE(item.setImage(path)) << "missing";
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("no picture");
    file.close();
    EXPECT_FALSE(item.setImage(path)) << "no picture";
    EXPECT_FALSE(item.hasImage());
}

TEST_F(TrayStatusItemTest, OpensItsMenuOnALeftClickToo) {
    item.setMenu(statusMenu(AppLanguage::system));
    Q_EMIT icon().activated(QSystemTrayIcon::Trigger);
    ASSERT_NE(openedMenu(), nullptr);
    EXPECT_EQ(openedMenu(), icon().contextMenu());
    openedMenu()->close();
    Q_EMIT icon().activated(QSystemTrayIcon::MiddleClick);
    EXPECT_EQ(openedMenu(), nullptr);
}

TEST(TrayStatusItem, LeavesTheMenuToStatusAreasThatOpenItThemselves) {
    EXPECT_TRUE(opensMenusItself(QStringLiteral("cocoa")));
    for (const char* platform : {"xcb", "wayland", "offscreen", ""}) {
        EXPECT_FALSE(opensMenusItself(QString::fromLatin1(platform))) << platform;
    }
}

TEST_F(TrayStatusItemTest, ReplacesAMenuWhoseEntryIsBeingServed) {
    QStringList chosen;
    item.chosen = [&](const StatusMenuEntry& entry) {
        item.setMenu(statusMenu(AppLanguage::zh));
        item.setMenu(statusMenu(AppLanguage::en));
        chosen << entry.title;
    };
    item.setMenu(statusMenu(AppLanguage::system));
    item.openMenu(QPoint(10, 10));
    ASSERT_NE(openedMenu(), nullptr);
    QTest::keyClick(openedMenu(), Qt::Key_R, Qt::ControlModifier);
    EXPECT_EQ(chosen, QStringList{QStringLiteral("Refresh Now")});
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    item.openMenu(QPoint(10, 10));
    ASSERT_NE(openedMenu(), nullptr) << "the new one serves";
    EXPECT_TRUE(openedMenu()->actions()[5]->menu()->actions()[2]->isChecked());
    openedMenu()->close();
}

} // namespace
} // namespace pelloran
