#include "tests/support/Printing.h"

#include <QDir>
#include <QFile>
#include <QMap>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QXmlStreamReader>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

// What the Mac is told of the program before it runs.
namespace pelloran {
namespace {

const QString macFolder = QStringLiteral(PELLORAN_SOURCES) + u"/packaging/macos/"_s;

// The one dictionary of a property list: texts as they are, truths as "true" and "false", lists joined with commas.
QMap<QString, QString> propertyList(const QString& path) {
    QFile file(path);
    EXPECT_TRUE(file.open(QFile::ReadOnly)) << path.toStdString();
    QXmlStreamReader xml(&file);
    QMap<QString, QString> entries;
    EXPECT_TRUE(xml.readNextStartElement() && xml.name() == u"plist");
    EXPECT_TRUE(xml.readNextStartElement() && xml.name() == u"dict");
    while (xml.readNextStartElement()) {
        EXPECT_EQ(xml.name(), u"key") << "line " << xml.lineNumber();
        const QString key = xml.readElementText();
        EXPECT_FALSE(entries.contains(key)) << key.toStdString() << " stands there twice";
        if (!xml.readNextStartElement()) {
            ADD_FAILURE() << key.toStdString() << " has no value";
        } else if (xml.name() == u"string") {
            entries[key] = xml.readElementText();
        } else if (xml.name() == u"true" || xml.name() == u"false") {
            entries[key] = xml.name().toString();
            xml.skipCurrentElement();
        } else if (xml.name() == u"array") {
            QStringList texts;
            while (xml.readNextStartElement()) {
                EXPECT_EQ(xml.name(), u"string") << key.toStdString();
                texts.append(xml.readElementText());
            }
            entries[key] = texts.join(u',');
        } else {
            ADD_FAILURE() << key.toStdString() << " is of a kind that is not used";
            xml.skipCurrentElement();
        }
    }
    while (!xml.atEnd()) {
        xml.readNext();
    }
    EXPECT_FALSE(xml.hasError()) << xml.errorString().toStdString();
    return entries;
}

// Lines of "key" = "value"; and nothing else but comments.
QMap<QString, QString> strings(const QString& path) {
    QFile file(path);
    EXPECT_TRUE(file.open(QFile::ReadOnly)) << path.toStdString();
    static const QRegularExpression comment(u"^/\\*[^*]*\\*/$"_s);
    static const QRegularExpression entry(u"^\"([A-Za-z]+)\" = \"([^\"\\\\]+)\";$"_s);
    QMap<QString, QString> entries;
    for (const QString& line : QString::fromUtf8(file.readAll()).split(u'\n', Qt::SkipEmptyParts)) {
        const auto match = entry.match(line);
        EXPECT_TRUE(match.hasMatch() || comment.match(line).hasMatch()) << line.toStdString();
        if (match.hasMatch()) {
            entries[match.captured(1)] = match.captured(2);
        }
    }
    return entries;
}

TEST(InfoPlist, SaysWhatTheSystemAsksFor) {
    struct Case {
        const char* why;
        QString key;
        QString value;
    };

    const Case cases[] = {
        {"an application", u"CFBundlePackageType"_s, u"APPL"_s},
        {"what choices and permissions are kept under", u"CFBundleIdentifier"_s, u"com.local.pelloran"_s},
        {"its name", u"CFBundleName"_s, u"Pelloran"_s},
        {"the program within, as CMake names it", u"CFBundleExecutable"_s, u"Pelloran"_s},
        {"the icon within, as CMake names it", u"CFBundleIconFile"_s, u"Pelloran"_s},
        {"the project's version", u"CFBundleShortVersionString"_s, QStringLiteral(PELLORAN_VERSION)},
        {"no older system", u"LSMinimumSystemVersion"_s, u"13.4"_s},
        {"sharp letters", u"NSHighResolutionCapable"_s, u"true"_s},
        {"both languages", u"CFBundleLocalizations"_s, u"en,zh-Hans"_s},
        {"the one of them for everybody else", u"CFBundleDevelopmentRegion"_s, u"en"_s},
        {"a program with windows", u"NSPrincipalClass"_s, u"NSApplication"_s},
    };
    const auto entries = propertyList(QStringLiteral(PELLORAN_INFO_PLIST));
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        EXPECT_EQ(entries.value(c.key), c.value);
    }
    EXPECT_FALSE(entries.contains(u"LSUIElement"_s)) << "it is a regular application, with a place in the Dock";
    EXPECT_FALSE(entries.contains(u"LSBackgroundOnly"_s));
    EXPECT_TRUE(QRegularExpression(u"^[1-9][0-9]*$"_s).match(entries.value(u"CFBundleVersion"_s)).hasMatch());
    EXPECT_TRUE(QRegularExpression(u"^[0-9]+(\\.[0-9]+){0,2}$"_s)
                    .match(entries.value(u"CFBundleShortVersionString"_s))
                    .hasMatch())
        << "three numbers at most";
    for (auto entry = entries.begin(); entry != entries.end(); ++entry) {
        EXPECT_FALSE(entry.value().isEmpty()) << entry.key().toStdString();
        EXPECT_FALSE(entry.value().contains(u'@')) << entry.key().toStdString() << " was not filled in";
    }
}

TEST(InfoPlist, IsSaidInEveryLanguage) {
    const auto entries = propertyList(QStringLiteral(PELLORAN_INFO_PLIST));
    const QStringList languages = entries.value(u"CFBundleLocalizations"_s).split(u',');
    EXPECT_EQ(QDir(macFolder).entryList({u"*.lproj"_s}, QDir::Dirs, QDir::Name),
              QStringList(languages).replaceInStrings(QRegularExpression(u"$"_s), u".lproj"_s));
    const QMap<QString, QString> english = strings(macFolder + u"en.lproj/InfoPlist.strings"_s);
    ASSERT_FALSE(english.isEmpty());
    for (auto entry = english.begin(); entry != english.end(); ++entry) {
        EXPECT_EQ(entry.value(), entries.value(entry.key())) << entry.key().toStdString();
    }
    for (const QString& language : languages) {
        const auto translated = strings(macFolder + language + u".lproj/InfoPlist.strings"_s);
        EXPECT_EQ(translated.keys(), english.keys()) << language.toStdString();
    }
}

// Each of them is a hole in the hardened runtime, and has its reason in docs/releasing.md.
TEST(Entitlements, AreThisOneAndNoMore) {
    const auto entitlements = propertyList(macFolder + u"Pelloran.entitlements"_s);
    EXPECT_EQ(entitlements.keys(), QStringList{u"com.apple.security.cs.allow-jit"_s});
    EXPECT_EQ(entitlements.value(u"com.apple.security.cs.allow-jit"_s), u"true"_s);
    QFile file(macFolder + u"Pelloran.entitlements"_s);
    ASSERT_TRUE(file.open(QFile::ReadOnly));
    EXPECT_FALSE(file.readAll().contains("<!--"))
        << "the kernel has a reader of its own for these, which is a simple one";
}

// Whatever judges of such files is there: Apple's own plutil, its namesake, or Python's reader.
TEST(InfoPlist, IsReadByOthers) {
    struct Reader {
        QString program;
        QStringList arguments;
    };

    const QString path = QStringLiteral(PELLORAN_INFO_PLIST);
    const Reader readers[] = {
#ifdef Q_OS_MACOS
        {u"plutil"_s, {u"-lint"_s, path}},
#else
        {u"plistutil"_s, {u"-i"_s, path, u"-o"_s, QProcess::nullDevice()}},
#endif
        {u"xmllint"_s, {u"--noout"_s, u"--nonet"_s, path}},
        {u"python3"_s, {u"-c"_s, u"import plistlib, sys; plistlib.load(open(sys.argv[1], 'rb'))"_s, path}},
    };
    int asked = 0;
    for (const Reader& reader : readers) {
        if (QStandardPaths::findExecutable(reader.program).isEmpty()) {
            continue;
        }
        ++asked;
        QProcess process;
        process.start(reader.program, reader.arguments);
        ASSERT_TRUE(process.waitForFinished(30'000)) << reader.program.toStdString();
        EXPECT_EQ(process.exitCode(), 0) << reader.program.toStdString() << ": "
                                         << process.readAllStandardError().toStdString();
    }
    if (asked == 0) {
        GTEST_SKIP() << "needs plutil, plistutil, xmllint or python3";
    }
}

} // namespace
} // namespace pelloran
