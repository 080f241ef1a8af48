#include "recording/Redaction.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <map>
#include <utility>

using namespace Qt::StringLiterals;

namespace pelloran::recording {

namespace {

// More than LogWatcher needs: where the game writes its lines in another way one day, these tell how.
constexpr std::array<const char*, 6> landmarks{"Draft",    "Client chooses", "currMode",
                                               "OnChosen", "Hero Card",      "Got new draft deck"};

constexpr qsizetype shortestAccount = 3;

QRegularExpression unicode(const QString& pattern) {
    return QRegularExpression(pattern, QRegularExpression::UseUnicodePropertiesOption);
}

// As Linux and Windows write it; Wine shows a home folder as "Z:\\home\\mira".
QRegularExpression anyPath(const QString& path) {
    QString pattern = QRegularExpression::escape(path);
    return unicode(pattern.replace(u"\\/"_s, u"/"_s).replace(u'/', u"[\\\\/]+"_s) + u"(?![^\\\\/\\s\"':;,)])"_s);
}

// Whole words only, which ideographs beside them do not lengthen; where nothing parts words, anywhere. A slash before
// it may be written as in an address.
QRegularExpression anyAccount(const QString& account) {
    static const QString ideographs = u"\\p{Han}\\p{Hiragana}\\p{Katakana}"_s;
    static const QRegularExpression anyIdeograph = unicode(u"["_s + ideographs + u']');
    const QString name = QRegularExpression::escape(account);
    const QString wordCharacter = u"[^\\W"_s + ideographs + u']';
    const QString pattern = account.contains(anyIdeograph) ? name
                                                           : u"(?:(?<=%2F)|(?<=%5C)|(?<!"_s + wordCharacter + u"))"_s +
                                                                 name + u"(?!"_s + wordCharacter + u')';
    return QRegularExpression(pattern, QRegularExpression::CaseInsensitiveOption |
                                           QRegularExpression::UseUnicodePropertiesOption);
}

// `make` of an owner's name or folder. Making one takes many times what searching a line with it takes.
template <auto make>
const QRegularExpression& madeOnce(const QString& text) {
    thread_local std::map<QString, QRegularExpression> made;
    const auto found = made.find(text);
    return found != made.end() ? found->second : made.emplace(text, make(text)).first->second;
}

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
    for (const QString& home : owner.homes) {
        text.replace(madeOnce<anyPath>(home), u"~"_s);
    }
    text.replace(battleTag, u"<player>"_s); // an account's name may be its first part
    for (const QString& account : owner.accounts) {
        if (account.size() >= shortestAccount) {
            text.replace(madeOnce<anyAccount>(account), u"<user>"_s);
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
