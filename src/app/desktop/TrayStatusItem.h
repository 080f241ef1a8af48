#pragma once

#include "app/desktop/StatusItem.h"

#include <QObject>
#include <QSystemTrayIcon>
#include <QTimer>

#include <memory>

namespace pelloran {

// The item as Qt's tray icon. A left click opens the menu as well as a right one. A tray of the X server's kind is
// taken whenever it appears; of a host on D-Bus, Qt 6.4 asks once in a program's life, and then follows its restarts.
class TrayStatusItem final : public QObject, public StatusItem {
public:
    TrayStatusItem();
    ~TrayStatusItem() override;

    bool isAvailable() const override;
    bool setImage(const QString& path) override;

    bool hasImage() const override { return withImage; }

    void setTitle(const QString& title) override;
    void setToolTip(const QString& text) override;
    void setMenu(const std::vector<StatusMenuEntry>& entries) override;
    void openMenu(QPoint position) override;

private:
    struct DeleteLater {
        void operator()(QMenu* replaced) const;
    };

    void takeTray();

    // The icon refers to it to its end. One that is open may not go before its entry has been served.
    std::unique_ptr<QMenu, DeleteLater> menu;
    QSystemTrayIcon icon{this};
    QTimer whileThereIsNone{this};
    bool withImage = false;
};

// Whether the status area that Qt's plugin of this name speaks to opens an item's menu on any click by itself, so that
// opening it too would show two.
bool opensMenusItself(const QString& platform);

} // namespace pelloran
