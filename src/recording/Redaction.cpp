#include "recording/Redaction.h"

#include <QDir>
#include <QRegularExpression>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace pelloran::recording {

namespace {

// More than LogWatcher needs: where the game writes its lines in another way one day, these tell how.
constexpr std::array<const char*, 5> landmarks{"Draft", "Client chooses", "currMode", "OnChosen", "Hero Card"};

// Shorter ones are parts of words everywhere.
constexpr qsizetype shortestAccount = 3;

QRegularExpression unicode(const QString& pattern) {
    return QRegularExpression(pattern, QRegularExpression::UseUnicodePropertiesOption);
}

} // namespace

Owner Owner::current() {
    const QString home = QDir::homePath();
    return {home == QDir::rootPath() ? QString() : home, QDir(home).dirName()};
}

QString redacted(QString text, const Owner& owner) {
    static const QRegularExpression battleTag = unicode(u"[\\w]{1,24}#\\d{3,9}(?!\\d)"_s);
    static const QRegularExpression homeFolder = unicode(u"(/home/|/Users/|[\\\\/]users[\\\\/]+)[^\\\\/\\s\"':;,]+"_s);
    static const QRegularExpression homeFolderOfWindows =
        QRegularExpression(u"([A-Z]:[\\\\/]+users[\\\\/]+)(?:[^\\\\/\"':;,]+(?=[\\\\/])|[^\\\\/\\s\"':;,]+)"_s,
                           QRegularExpression::CaseInsensitiveOption | QRegularExpression::UseUnicodePropertiesOption);
    if (owner.home.size() > 1) {
        text.replace(owner.home, u"~"_s);
    }
    text.replace(homeFolderOfWindows, u"\\1<user>"_s);
    text.replace(homeFolder, u"\\1<user>"_s);
    text.replace(battleTag, u"<player>"_s);
    const bool isWordOfTheLogs = std::ranges::any_of(landmarks, [&owner](const char* landmark) {
        return QString::fromLatin1(landmark).contains(owner.account, Qt::CaseInsensitive);
    });
    if (owner.account.size() >= shortestAccount && !isWordOfTheLogs) {
        text.replace(unicode(u"(?<!\\w)"_s + QRegularExpression::escape(owner.account) + u"(?!\\w)"_s), u"<user>"_s);
    }
    return text;
}

bool concernsDraft(QByteArrayView line) {
    return std::ranges::any_of(landmarks, [line](const char* landmark) { return line.contains(landmark); });
}

} // namespace pelloran::recording
