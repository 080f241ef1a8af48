#include "app/desktop/TrayStatusItem.h"

#include <QCursor>
#include <QFont>
#include <QGuiApplication>
#include <QIcon>
#include <QMenu>
#include <QPainter>
#include <QPixmap>

#include <chrono>

namespace pelloran {

namespace {

// Side of the item's picture in device-independent pixels.
constexpr int side = 18;

// A tray shows pictures only. The light letters stand on a dark plate, since nobody tells how light the tray is.
QPixmap paintedTitle(const QString& title, int scale) {
    QPixmap picture(QSize(side, side) * scale);
    picture.setDevicePixelRatio(scale);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(38, 42, 54));
    painter.drawRoundedRect(QRectF(0, 0, side, side), 4, 4);
    QFont font = painter.font();
    font.setBold(true);
    // The longest title must fit.
    font.setPixelSize(title.size() > 2 ? 8 : 11);
    painter.setFont(font);
    painter.setPen(QColor(255, 209, 92));
    painter.drawText(QRectF(0, 0, side, side), Qt::AlignCenter, title);
    return picture;
}

} // namespace

void TrayStatusItem::DeleteLater::operator()(QMenu* replaced) const {
    replaced->deleteLater();
}

TrayStatusItem::TrayStatusItem() {
    const bool opensItself = opensMenusItself(QGuiApplication::platformName());
    connect(&icon, &QSystemTrayIcon::activated, this, [this, opensItself](QSystemTrayIcon::ActivationReason reason) {
        if (reason == QSystemTrayIcon::Trigger && !opensItself) {
            openMenu(QCursor::pos());
        }
    });
    // Nothing tells of a status area that appears: panels of the desktop start when they like.
    connect(&whileThereIsNone, &QTimer::timeout, this, &TrayStatusItem::takeTray);
    whileThereIsNone.setInterval(std::chrono::seconds(2));
}

TrayStatusItem::~TrayStatusItem() {
    delete menu.release(); // no event loop need come after this one
}

bool opensMenusItself(const QString& platform) {
    return platform == QStringLiteral("cocoa");
}

bool TrayStatusItem::isAvailable() const {
    return QSystemTrayIcon::isSystemTrayAvailable();
}

bool TrayStatusItem::setImage(const QString& path) {
    const QPixmap picture(path);
    if (picture.isNull()) {
        return false;
    }
    withImage = true;
    icon.setIcon(QIcon(path));
    takeTray();
    return true;
}

void TrayStatusItem::setTitle(const QString& title) {
    QIcon painted;
    for (const int scale : {1, 2}) {
        painted.addPixmap(paintedTitle(title, scale));
    }
    icon.setIcon(painted);
    takeTray();
}

void TrayStatusItem::setToolTip(const QString& text) {
    icon.setToolTip(text);
}

void TrayStatusItem::setMenu(const std::vector<StatusMenuEntry>& entries) {
    auto next = makeStatusMenu(entries, [this](const StatusMenuEntry& entry) {
        if (chosen) {
            chosen(entry);
        }
    });
    icon.setContextMenu(next.get());
    menu.reset(next.release());
}

void TrayStatusItem::openMenu(QPoint position) {
    if (menu) {
        menu->popup(position);
    }
}

void TrayStatusItem::takeTray() {
    // An icon that is shown where there is no tray would not look for one again.
    if (isAvailable()) {
        whileThereIsNone.stop();
        icon.show();
    } else {
        whileThereIsNone.start();
    }
}

} // namespace pelloran
