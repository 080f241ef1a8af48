#include "platform/freedesktop/KdeGlobals.h"

#include <QByteArrayList>
#include <QFile>
#include <QFileInfo>

#include <cmath>

namespace pelloran::freedesktop {

namespace {

constexpr qint64 largestFile = 1'000'000; // bytes; a usual one has a few thousand

} // namespace

std::optional<double> animationDurationFactor(const QByteArray& contents) {
    std::optional<double> factor;
    bool inGroup = false;
    for (const QByteArray& whole : contents.split('\n')) {
        const QByteArray line = whole.trimmed();
        if (line.startsWith('[')) {
            // Of "[Group][$i]" and "[Group][Part]" the first is the group with a mark, the second another group.
            inGroup = line == "[KDE]" || line == "[KDE][$i]";
            continue;
        }
        const auto equals = line.indexOf('=');
        if (!inGroup || equals < 0) {
            continue;
        }
        const QByteArray key = line.first(equals).trimmed();
        if (key == "AnimationDurationFactor" || key == "AnimationDurationFactor[$i]") {
            bool isNumber = false;
            const double number = line.sliced(equals + 1).trimmed().toDouble(&isNumber);
            factor = isNumber && std::isfinite(number) ? std::optional(number) : std::nullopt;
        }
    }
    return factor;
}

KdeGlobals::KdeGlobals(const QString& file)
    : fileName(file) {
    QObject::connect(&watcher, &QFileSystemWatcher::fileChanged, &watcher, [this] { read(); });
    QObject::connect(&watcher, &QFileSystemWatcher::directoryChanged, &watcher, [this] { read(); });
    // The folder tells when the file comes, or a new one takes its place.
    watcher.addPath(QFileInfo(file).absolutePath());
    read();
}

void KdeGlobals::read() {
    if (!watcher.files().contains(fileName) && QFileInfo::exists(fileName)) {
        watcher.addPath(fileName); // a file that was replaced is no longer watched
    }
    QFile file(fileName);
    const auto now = file.open(QIODevice::ReadOnly) ? animationDurationFactor(file.read(largestFile)) : std::nullopt;
    if (now != value) {
        value = now;
        if (changed) {
            changed();
        }
    }
}

} // namespace pelloran::freedesktop
