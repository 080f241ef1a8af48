#pragma once

#include <QByteArray>
#include <QFileSystemWatcher>
#include <QObject>
#include <QString>

#include <functional>
#include <optional>

namespace pelloran::freedesktop {

// AnimationDurationFactor of the group KDE in a file of KDE's settings; absent when it is missing or no number.
std::optional<double> animationDurationFactor(const QByteArray& contents);

// Follows that value in a file, which may be missing, change, or be replaced by a new one, as KDE does with it. Main
// thread.
class KdeGlobals {
public:
    explicit KdeGlobals(const QString& file);

    std::optional<double> factor() const { return value; }

    std::function<void()> changed;

private:
    void read();

    QString fileName;
    QFileSystemWatcher watcher;
    std::optional<double> value;
};

} // namespace pelloran::freedesktop
