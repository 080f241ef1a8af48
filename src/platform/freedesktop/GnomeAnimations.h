#pragma once

#include <QObject>
#include <QProcess>
#include <QString>
#include <QStringView>
#include <QTimer>

#include <chrono>
#include <functional>
#include <optional>

namespace pelloran::freedesktop {

// Of $XDG_CURRENT_DESKTOP, such as "ubuntu:GNOME".
bool isGnome(QStringView currentDesktop);

// Asks GNOME's own tool once whether animations are enabled, in a process that is ended when it takes too long. Main
// thread.
class GnomeAnimations {
public:
    static constexpr std::chrono::milliseconds usualPatience{5'000};

    // Absent when the tool is missing, fails, does not know or takes longer than `patience`.
    explicit GnomeAnimations(const std::function<void(std::optional<bool>)>& answered,
                             const QString& program = QStringLiteral("gsettings"),
                             std::chrono::milliseconds patience = usualPatience);
    ~GnomeAnimations();
    GnomeAnimations(const GnomeAnimations&) = delete;
    GnomeAnimations& operator=(const GnomeAnimations&) = delete;

private:
    QProcess process;
    QTimer deadline;
};

} // namespace pelloran::freedesktop
