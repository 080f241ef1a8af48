#include "recording/Redaction.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;

namespace pelloran::recording {

namespace {

// More than LogWatcher needs: where the game writes its lines in another way one day, these tell how.
constexpr std::array<const char*, 5> landmarks{"Draft", "Client chooses", "currMode", "OnChosen", "Hero Card"};

constexpr qsizetype shortestAccount = 3;

QRegularExpression unicode(const QString& pattern) {
    return QRegularExpression(pattern, QRegularExpression::UseUnicodePropertiesOption);
}

// As Linux and Windows write it; Wine shows a home folder as "Z:\\home\\mira".
QRegularExpression anyPath(const QString& path) {
    QString pattern = QRegularExpression::escape(path);
    return unicode(pattern.replace(u"\\/"_s, u"/"_s).replace(u'/', u"[\\\\/]+"_s) + u"(?![^\\\\/\\s\"':;,)])"_s);
}

// Whole words only.
QRegularExpression anyAccount(const QString& account) {
    return QRegularExpression(u"(?<!\\w)"_s + QRegularExpression::escape(account) + u"(?!\\w)"_s,
                              QRegularExpression::CaseInsensitiveOption |
                                  QRegularExpression::UseUnicodePropertiesOption);
}

// Of the names that were asked for last: making a pattern takes ten times as long as looking for it in a line, and a
// log has any number of lines, all of one owner.
class Patterns {
public:
    Patterns(QRegularExpression (*patternOf)(const QString&), qsizetype shortestName)
        : make(patternOf)
        , shortest(shortestName) {}

    const std::vector<QRegularExpression>& of(const QStringList& names) {
        if (names != made) {
            made = names;
            patterns.clear();
            for (const QString& name : names) {
                if (name.size() >= shortest) {
                    patterns.push_back(make(name));
                }
            }
        }
        return patterns;
    }

private:
    QRegularExpression (*make)(const QString&);
    qsizetype shortest;
    QStringList made;
    std::vector<QRegularExpression> patterns;
};

void addOnce(QStringList& texts, const QString& text) {
    if (!text.isEmpty() && !texts.contains(text)) {
        texts.append(text);
    }
}

} // namespace

Owner Owner::current() {
    Owner owner;
    QStringList homes{QDir::homePath()};
    if (const passwd* const entry = ::getpwuid(::getuid())) {
        homes.append(QFile::decodeName(entry->pw_dir));
        addOnce(owner.accounts, QString::fromLocal8Bit(entry->pw_name));
    }
    for (const QString& home : std::as_const(homes)) {
        for (const QString& path : {QDir::cleanPath(home), QFileInfo(home).canonicalFilePath()}) {
            if (!path.isEmpty() && path != QDir::rootPath()) {
                addOnce(owner.homes, path);
                addOnce(owner.accounts, QDir(path).dirName());
            }
        }
    }
    for (const char* variable : {"USER", "LOGNAME", "USERNAME"}) { // the last as Wine has it
        addOnce(owner.accounts, qEnvironmentVariable(variable));
    }
    return owner;
}

QString redacted(QString text, const Owner& owner) {
    static const QRegularExpression battleTag = unicode(u"[\\w\\p{M}]{1,24}#\\d{3,9}(?!\\d)"_s);
    static const QRegularExpression homeFolder = unicode(u"([\\\\/]+(?:home|Users|users)[\\\\/]+)[^\\\\/\\s\"':;,]+"_s);
    static const QRegularExpression homeFolderOfWindows =
        QRegularExpression(u"([A-Z]:[\\\\/]+users[\\\\/]+)(?:[^\\\\/\"':;,]+(?=[\\\\/])|[^\\\\/\\s\"':;,]+)"_s,
                           QRegularExpression::CaseInsensitiveOption | QRegularExpression::UseUnicodePropertiesOption);
    static thread_local Patterns ofHomes(anyPath, 0);
    static thread_local Patterns ofAccounts(anyAccount, shortestAccount);
    for (const QRegularExpression& home : ofHomes.of(owner.homes)) {
        text.replace(home, u"~"_s);
    }
    text.replace(battleTag, u"<player>"_s); // an account's name may be its first part
    if (!owner.accounts.isEmpty()) { // who asks with them and without finds them made
        for (const QRegularExpression& account : ofAccounts.of(owner.accounts)) {
            text.replace(account, u"<user>"_s);
        }
    }
    // Behind the names: one may hold what a folder's name is taken to end at.
    text.replace(homeFolderOfWindows, u"\\1<user>"_s);
    text.replace(homeFolder, u"\\1<user>"_s);
    return text;
}

bool concernsDraft(QByteArrayView line) {
    return std::ranges::any_of(landmarks, [line](const char* landmark) { return line.contains(landmark); });
}

} // namespace pelloran::recording
