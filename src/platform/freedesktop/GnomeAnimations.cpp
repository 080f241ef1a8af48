#include "platform/freedesktop/GnomeAnimations.h"

#include "platform/freedesktop/PortalNames.h"

#include <QStringList>

namespace pelloran::freedesktop {

namespace {

std::optional<bool> truth(const QByteArray& text) {
    if (text == "true") {
        return true;
    }
    return text == "false" ? std::optional(false) : std::nullopt;
}

} // namespace

bool isGnome(QStringView currentDesktop) {
    for (const QStringView name : currentDesktop.split(u':')) {
        if (name.compare(u"GNOME", Qt::CaseInsensitive) == 0) {
            return true;
        }
    }
    return false;
}

GnomeAnimations::GnomeAnimations(const std::function<void(std::optional<bool>)>& answered, const QString& program,
                                 std::chrono::milliseconds patience) {
    QObject::connect(&process, &QProcess::finished, &process,
                     [this, answered](int exitCode, QProcess::ExitStatus status) {
                         deadline.stop();
                         const bool done = status == QProcess::NormalExit && exitCode == 0;
                         answered(done ? truth(process.readAllStandardOutput().trimmed()) : std::nullopt);
                     });
    QObject::connect(&process, &QProcess::errorOccurred, &process, [answered](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart) {
            answered(std::nullopt);
        }
    });
    deadline.setSingleShot(true);
    deadline.callOnTimeout(&process, &QProcess::kill);
    deadline.start(patience);
    process.setStandardErrorFile(QProcess::nullDevice());
    process.start(program, {QStringLiteral("get"), gnomeGroup, gnomeAnimationsKey}, QIODevice::ReadOnly);
}

GnomeAnimations::~GnomeAnimations() {
    process.disconnect();
    if (process.state() != QProcess::NotRunning) {
        process.kill();
        process.waitForFinished();
    }
}

} // namespace pelloran::freedesktop
