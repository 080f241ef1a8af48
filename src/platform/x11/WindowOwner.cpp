#include "platform/x11/WindowOwner.h"

#include <QByteArrayList>
#include <QFile>

#include <algorithm>
#include <array>

namespace pelloran::x11 {

namespace {

constexpr qint64 longestCommandLine = 16'384; // bytes; the name stands at its beginning

bool isAnyOf(QStringView text, auto... names) {
    return ((text.compare(names, Qt::CaseInsensitive) == 0) || ...);
}

bool isLoader(QStringView program) {
    return isAnyOf(program, u"wine", u"wine64", u"wine-preloader", u"wine64-preloader", u"start", u"explorer");
}

bool isWindowsProgram(QStringView argument) {
    return argument.endsWith(u".exe", Qt::CaseInsensitive);
}

QString baseName(const QString& path) {
    const QString file = path.sliced(std::max(path.lastIndexOf(u'/'), path.lastIndexOf(u'\\')) + 1);
    return isWindowsProgram(file) ? file.chopped(4) : file;
}

QByteArray contents(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.read(longestCommandLine) : QByteArray();
}

} // namespace

bool isLauncher(QStringView windowClass) {
    return windowClass.startsWith(u"steam_app_", Qt::CaseInsensitive) ||
           isAnyOf(windowClass, u"explorer.exe", u"start.exe", u"steam_proton", u"wine", u"wine64", u"wine-preloader",
                   u"wine64-preloader", u"gamescope");
}

QString programName(const QByteArray& commandLine, const QByteArray& shortName) {
    const QByteArrayList arguments = commandLine.split('\0');
    QString program = baseName(QString::fromUtf8(arguments.front()));
    if (!program.isEmpty() && !isLoader(program)) {
        return program;
    }
    for (const QByteArray& bytes : arguments.sliced(1)) {
        const QString argument = QString::fromUtf8(bytes);
        if (isWindowsProgram(argument) && !isLoader(baseName(argument))) {
            return baseName(argument);
        }
    }
    const QString name = baseName(QString::fromUtf8(shortName).trimmed());
    return name.isEmpty() ? program : name;
}

std::optional<QString> programName(std::uint32_t processId) {
    const QString folder = QStringLiteral("/proc/%1/").arg(processId);
    const QString name =
        programName(contents(folder + QStringLiteral("cmdline")), contents(folder + QStringLiteral("comm")));
    return name.isEmpty() ? std::nullopt : std::optional(name);
}

} // namespace pelloran::x11
