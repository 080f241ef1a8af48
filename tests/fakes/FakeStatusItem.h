#pragma once

#include "app/desktop/StatusItem.h"

#include <QImage>
#include <QStringList>

namespace pelloran::testing {

// Remembers what it shows, and each step in `steps`.
class FakeStatusItem final : public StatusItem {
public:
    explicit FakeStatusItem(QStringList& allSteps)
        : steps(allSteps) {}

    bool isAvailable() const override { return true; }

    bool setImage(const QString& path) override {
        steps << QStringLiteral("image");
        if (QImage(path).isNull()) {
            return false;
        }
        withImage = true;
        return true;
    }

    bool hasImage() const override { return withImage; }

    void setTitle(const QString& text) override {
        steps << QStringLiteral("title ") + text;
        title = text;
    }

    void setToolTip(const QString& text) override {
        steps << QStringLiteral("tooltip");
        toolTip = text;
    }

    void setMenu(const std::vector<StatusMenuEntry>& entries) override {
        steps << QStringLiteral("menu");
        menu = entries;
        ++menus;
    }

    void openMenu(QPoint position) override { openedAt.push_back(position); }

    // The user chooses the first entry, or entry of a submenu, that does this. False when the menu has none that is
    // enabled.
    [[nodiscard]] bool choose(StatusMenuEntry::Action action, const QString& representedObject = {}) const {
        return choose(menu, action, representedObject);
    }

    QString title;
    QString toolTip;
    std::vector<StatusMenuEntry> menu;
    int menus = 0;
    std::vector<QPoint> openedAt;

private:
    bool choose(const std::vector<StatusMenuEntry>& entries, StatusMenuEntry::Action action,
                const QString& representedObject) const {
        for (const StatusMenuEntry& entry : entries) {
            if (entry.action == action && entry.representedObject == representedObject && entry.enabled) {
                if (chosen) {
                    chosen(StatusMenuEntry(entry)); // the menu may be replaced meanwhile
                }
                return true;
            }
            if (choose(entry.submenu, action, representedObject)) {
                return true;
            }
        }
        return false;
    }

    QStringList& steps;
    bool withImage = false;
};

} // namespace pelloran::testing
