#pragma once

#include <QString>
#include <QStringList>

namespace pelloran {

// Questions and news that wait for the user's answer. Main thread; blocks until answered, with the event loop running.
// Implemented by the application, so that what decides to ask needs no widgets.
class Alerts {
public:
    enum class Style { informational, warning, critical };

    struct Alert {
        Style style = Style::informational;
        QString messageText;
        QString informativeText;
        QStringList buttons; // the first is the default; empty: one button to dismiss it
    };

    virtual ~Alerts() = default;

    // Index of the button pressed; closing the alert counts as the last one.
    virtual int runModal(const Alert& alert) = 0;
};

} // namespace pelloran
