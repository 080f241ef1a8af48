#pragma once

#include "app/desktop/StatusMenu.h"

#include <QPoint>
#include <QString>

#include <functional>
#include <vector>

namespace pelloran {

// The program's item in the desktop's status area: a picture, or a short title where there is none, a tooltip and a
// menu. A desktop may have no status area, or get one later. Main thread.
class StatusItem {
public:
    virtual ~StatusItem() = default;

    // Whether there is a status area to be seen in now.
    virtual bool isAvailable() const = 0;

    // The picture of this file, in its own colours; `path`@2x beside it serves dense screens. False when it cannot be
    // loaded; the item is left as it was then.
    virtual bool setImage(const QString& path) = 0;
    virtual bool hasImage() const = 0;

    // Shown in place of a picture.
    virtual void setTitle(const QString& title) = 0;

    virtual void setToolTip(const QString& text) = 0;

    // Replaces the menu. May be called while the menu is open or one of its entries is being served.
    virtual void setMenu(const std::vector<StatusMenuEntry>& entries) = 0;

    // Opens the menu away from the item, in screen coordinates.
    virtual void openMenu(QPoint position) = 0;

    // The user has chosen an entry.
    std::function<void(const StatusMenuEntry&)> chosen;
};

} // namespace pelloran
