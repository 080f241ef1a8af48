#pragma once

#include "localisation/AppLanguage.h"

#include <QString>

#include <functional>
#include <memory>
#include <vector>

class QMenu;

namespace pelloran {

// One line of the menu in the status area, as plain data.
struct StatusMenuEntry {
    enum class Action { none, toggleOverlay, refreshNow, checkConfigNow, checkAppUpdateNow, selectLanguage, quit };

    QString title;         // "": a separator
    QString keyEquivalent; // a letter, pressed with the Control key (Command on macOS); "" for none
    Action action = Action::none;
    // What a language entry chooses, as AppLanguage::rawValue.
    QString representedObject = {}; // NOLINT(readability-redundant-member-init): initialisers leave it out
    bool enabled = true;
    bool checked = false;
    std::vector<StatusMenuEntry> submenu = {}; // NOLINT(readability-redundant-member-init): likewise

    bool operator==(const StatusMenuEntry&) const = default;
};

// The menu in the language in force. The check mark stands at `preference`.
std::vector<StatusMenuEntry> statusMenu(AppLanguage preference);

// The same as a widget; it calls `choose` with the entry that the user chose, when it has closed. The keys work while
// it is open.
std::unique_ptr<QMenu> makeStatusMenu(const std::vector<StatusMenuEntry>& entries,
                                      const std::function<void(const StatusMenuEntry&)>& choose);

} // namespace pelloran
