#include "app/desktop/StatusMenu.h"

#include "localisation/L10n.h"

#include <QAction>
#include <QKeyEvent>
#include <QKeySequence>
#include <QMenu>

namespace pelloran {

namespace {

using Action = StatusMenuEntry::Action;

// Qt serves the shortcuts of a menu only where the menu hangs on a window that is active. This one hangs on nothing.
class MenuKeys final : public QObject {
public:
    explicit MenuKeys(QMenu& statusMenu)
        : QObject(&statusMenu)
        , menu(statusMenu) {}

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::KeyPress) {
            const QKeySequence pressed(static_cast<const QKeyEvent*>(event)->keyCombination());
            for (QAction* action : menu.actions()) {
                if (!action->shortcut().isEmpty() && action->shortcut() == pressed) {
                    if (action->isEnabled()) {
                        closeAll();
                        action->trigger();
                    }
                    return true;
                }
            }
        }
        return QObject::eventFilter(watched, event);
    }

private:
    void closeAll() {
        for (QMenu* submenu : menu.findChildren<QMenu*>()) {
            submenu->close();
        }
        menu.close();
    }

    QMenu& menu;
};

void fill(QMenu& menu, const std::vector<StatusMenuEntry>& entries, MenuKeys& keys,
          const std::function<void(const StatusMenuEntry&)>& choose) {
    menu.installEventFilter(&keys);
    for (const StatusMenuEntry& entry : entries) {
        QString title = entry.title;
        title.replace(u'&', QStringLiteral("&&")); // a single one underlines the next letter
        if (title.isEmpty()) {
            menu.addSeparator();
        } else if (!entry.submenu.empty()) {
            fill(*menu.addMenu(title), entry.submenu, keys, choose);
        } else {
            QAction* action = menu.addAction(title);
            if (!entry.keyEquivalent.isEmpty()) {
                action->setShortcut(QKeySequence(QStringLiteral("Ctrl+") + entry.keyEquivalent.toUpper()));
                action->setShortcutVisibleInContextMenu(true);
            }
            action->setEnabled(entry.enabled);
            action->setCheckable(entry.action == Action::selectLanguage);
            action->setChecked(entry.checked);
            QObject::connect(action, &QAction::triggered, &menu, [entry, choose] { choose(entry); });
        }
    }
}

} // namespace

std::vector<StatusMenuEntry> statusMenu(AppLanguage preference) {
    const StatusMenuEntry separator{{}, {}, Action::none};
    StatusMenuEntry languages{L10n::tr(u"menu.language"), {}, Action::none};
    for (const AppLanguage language : AppLanguage::allCases()) {
        StatusMenuEntry entry{language.menuTitle(), {}, Action::selectLanguage};
        entry.representedObject = language.rawValue();
        entry.checked = language == preference;
        languages.submenu.push_back(entry);
    }
    return {
        {L10n::tr(u"menu.toggleOverlay"), QStringLiteral("o"), Action::toggleOverlay},
        {L10n::tr(u"menu.refresh"), QStringLiteral("r"), Action::refreshNow},
        {L10n::tr(u"menu.checkConfig"), QStringLiteral("u"), Action::checkConfigNow},
        {L10n::tr(u"menu.checkAppUpdate"), {}, Action::checkAppUpdateNow},
        separator,
        languages,
        separator,
        {L10n::tr(u"menu.quit"), QStringLiteral("q"), Action::quit},
    };
}

std::unique_ptr<QMenu> makeStatusMenu(const std::vector<StatusMenuEntry>& entries,
                                      const std::function<void(const StatusMenuEntry&)>& choose) {
    auto menu = std::make_unique<QMenu>();
    fill(*menu, entries, *new MenuKeys(*menu), choose); // owned by the menu
    return menu;
}

} // namespace pelloran
