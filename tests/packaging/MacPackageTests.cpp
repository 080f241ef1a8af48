#include "tests/support/Printing.h"
#include "tests/support/ProgramRun.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

// The script that makes the Mac's downloads, with stand-ins for Apple's tools: what it asks of them and in which order,
// and that it stops where one of them fails. Whether they do what they are asked can be seen on a Mac alone.
namespace pelloran {
namespace {

using testing::ProgramOutput;

const QString script = QStringLiteral(PELLORAN_SOURCES) + u"/packaging/macos/package"_s;

// Writes each call to $CALLS, fails where the call contains $FAIL, and leaves behind what the next one needs.
const QByteArray standIn = R"sh(#!/bin/sh
tool=${0##*/}
echo "$tool $*" >>"$CALLS"
case "$tool $*" in *"${FAIL:-no call contains this}"*) exit 1 ;; esac
for last in "$@"; do :; done
case "$tool $*" in
  "uname -s") echo "${SYSTEM:-Darwin}" ;;
  "uname -m") echo arm64 ;;
  "git status"*) printf %s "${CHANGES:-}" ;;
  "git rev-parse"*) echo "${SHALLOW:-false}" ;;
  "git rev-list"*) echo 17 ;;
  "security "*) echo '  1) 0123 "Developer ID Application: Somebody (TEAM)"' ;;
  "cmake --build"*)
    mkdir -p "$2/Pelloran.app/Contents/MacOS"
    cp "$0" "$2/Pelloran.app/Contents/MacOS/Pelloran"
    ;;
  "ditto -c"* | "hdiutil "*) echo packed >"$last" ;;
  "ditto "*) cp -R "$1" "$2" ;;
  "macdeployqt "*)
    mkdir -p "$1/Contents/PlugIns/platforms" "$1/Contents/Frameworks/QtCore.framework/Versions/A"
    echo code >"$1/Contents/PlugIns/platforms/libqcocoa.dylib"
    echo code >"$1/Contents/Frameworks/libhelp.dylib"
    echo code >"$1/Contents/Frameworks/QtCore.framework/QtCore"
    ;;
  "otool "*)
    printf '%s (architecture arm64):\n\t/usr/lib/libSystem.B.dylib (x)\n\t@rpath/libhelp.dylib (x)\n' "$last"
    case "$last" in *libhelp.dylib) printf '%b' "${NEEDS:-}" ;; esac
    ;;
  "xcrun notarytool submit"*) printf '{\n  "id": "abc-1",\n  "status": "%s"\n}\n' "${VERDICT:-Accepted}" ;;
  "Pelloran release-info"*) echo '{"version": "1"}' ;;
  "shasum "*) echo 'digest' ;;
esac
)sh";

class MacPackage : public ::testing::Test {
protected:
    MacPackage() {
        for (const char* tool : {"uname", "git", "security", "cmake", "ninja", "ditto", "hdiutil", "otool", "lipo",
                                 "xcrun", "codesign", "spctl", "shasum", "qt/bin/macdeployqt", "macdeployqt"}) {
            write(u"bin/"_s + QString::fromUtf8(tool), standIn, true);
        }
        write(u"key.p8"_s, "secret", false);
        environment.insert(u"PATH"_s, path(u"bin"_s) + u':' + environment.value(u"PATH"_s));
        environment.insert(u"CALLS"_s, path(u"calls"_s));
        environment.insert(u"PELLORAN_BUILD_FOLDER"_s, path(u"build"_s));
        environment.insert(u"PELLORAN_SIGNING_IDENTITY"_s, u"Developer ID Application: Somebody (TEAM)"_s);
        environment.insert(u"PELLORAN_NOTARY_KEY"_s, path(u"key.p8"_s));
        environment.insert(u"PELLORAN_NOTARY_KEY_ID"_s, u"KEYID"_s);
        environment.insert(u"PELLORAN_NOTARY_ISSUER"_s, u"ISSUER"_s);
        environment.insert(u"PELLORAN_QT"_s, path(u"bin/qt"_s));
        environment.insert(u"PELLORAN_CONFIG_SERVER"_s, u"https://config.example"_s);
        environment.insert(u"PELLORAN_UPDATE_SERVER"_s, u"https://update.example"_s);
    }

    QString path(const QString& below) const { return folder.filePath(below); }

    void write(const QString& below, const QByteArray& bytes, bool program) const {
        ASSERT_TRUE(QDir().mkpath(QFileInfo(path(below)).path()));
        QFile file(path(below));
        ASSERT_TRUE(file.open(QFile::WriteOnly));
        ASSERT_EQ(file.write(bytes), bytes.size());
        if (program) {
            ASSERT_TRUE(file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
        }
    }

    ProgramOutput run(const QStringList& arguments = {}) const {
        QFile::remove(path(u"calls"_s));
        return testing::runProgram(script, arguments, environment);
    }

    // What was asked of the tools so far, without the folder of this test.
    QStringList calls() const {
        QFile file(path(u"calls"_s));
        const QByteArray lines = file.open(QFile::ReadOnly) ? file.readAll() : QByteArray();
        return QString::fromUtf8(lines).replace(folder.path() + u'/', u""_s).split(u'\n', Qt::SkipEmptyParts);
    }

    // Each call that makes or changes something, in their order.
    QStringList deeds() const {
        return calls().filter(
            QRegularExpression(u"^(cmake|macdeployqt|ditto|codesign|xcrun|hdiutil|Pelloran|shasum) "_s));
    }

    QTemporaryDir folder;
    QProcessEnvironment environment = testing::cleanEnvironment(folder.path());
};

TEST_F(MacPackage, SignsFromTheInsideOutAndPacksWhatIsStapled) {
    const ProgramOutput made = run();
    ASSERT_EQ(made.exitCode, 0) << made.standardError.toStdString();
    const QString app = u"build/package/Pelloran.app"_s;
    const QString version = QStringLiteral(PELLORAN_VERSION);
    const QString image = u"build/package/Pelloran-%1.dmg"_s.arg(version);
    const QString archive = u"build/package/Pelloran-%1.zip"_s.arg(version);
    const QString who = u"--sign Developer ID Application: Somebody (TEAM) "_s;
    const QString submit =
        u"xcrun notarytool submit %1 --key key.p8 --key-id KEYID --issuer ISSUER --wait --timeout 1h "
        u"--output-format json"_s;
    const QStringList expected{
        u"cmake --preset macos -B build -D PELLORAN_BUILD_NUMBER=17 -D CMAKE_OSX_ARCHITECTURES=arm64;x86_64 "
        u"-D CMAKE_PREFIX_PATH=bin/qt -D PELLORAN_CONFIG_SERVER=https://config.example "
        u"-D PELLORAN_UPDATE_SERVER=https://update.example"_s,
        u"cmake --build build --target pelloran"_s,
        u"ditto build/Pelloran.app "_s + app,
        u"macdeployqt "_s + app + u" -verbose=1"_s,
        u"codesign --force --timestamp "_s + who + app + u"/Contents/PlugIns/platforms/libqcocoa.dylib"_s,
        u"codesign --force --timestamp "_s + who + app + u"/Contents/Frameworks/libhelp.dylib"_s,
        u"codesign --force --timestamp "_s + who + app + u"/Contents/Frameworks/QtCore.framework"_s,
        u"codesign --force --timestamp --options runtime --entitlements packaging/macos/Pelloran.entitlements "_s +
            who + app,
        u"codesign --verify --deep --strict --verbose=2 "_s + app,
        u"ditto -c -k --keepParent "_s + app + u" build/package/to-notarise.zip"_s,
        submit.arg(u"build/package/to-notarise.zip"_s),
        u"xcrun stapler staple "_s + app,
        u"xcrun stapler validate "_s + app,
        u"ditto "_s + app + u" build/package/image/Pelloran.app"_s,
        u"hdiutil create -volname Pelloran %1 -srcfolder build/package/image -fs HFS+ -format UDZO -ov %2"_s.arg(
            version, image),
        u"ditto -c -k --keepParent "_s + app + u' ' + archive,
        u"codesign --force --timestamp "_s + who + image,
        submit.arg(image),
        u"xcrun stapler staple "_s + image,
        u"xcrun stapler validate "_s + image,
    };
    const QStringList done = deeds();
    EXPECT_EQ(done.first(std::min(expected.size(), done.size())), expected);
    ASSERT_EQ(done.size(), expected.size() + 2);
    EXPECT_TRUE(done[expected.size()].startsWith(
        u"Pelloran release-info --name Pelloran --version %1 --build 17 --min-macos 13.4 --arch arm64 --arch x86_64 "
        u"--dmg %2 --zip %3 --published-at 2"_s.arg(version, image, archive)))
        << done[expected.size()].toStdString();
    EXPECT_TRUE(done.last().startsWith(u"shasum -a 256 "_s));
    EXPECT_TRUE(calls().contains(u"spctl --assess --type execute --verbose "_s + app));
    EXPECT_TRUE(
        calls().contains(u"spctl --assess --type open --context context:primary-signature --verbose "_s + image));
    EXPECT_EQ(calls().filter(u"lipo"_s).size(), 4) << "the program, a plug-in, a library and a framework";
    for (const char* name : {"latest.json", "SHA256SUMS", "image/Applications"}) {
        EXPECT_TRUE(QFileInfo(path(u"build/package/"_s + QString::fromUtf8(name))).isSymLink() ||
                    QFile::exists(path(u"build/package/"_s + QString::fromUtf8(name))))
            << name;
    }
    EXPECT_FALSE(QFile::exists(path(u"build/package/to-notarise.zip"_s)));
}

TEST_F(MacPackage, TellsAllThatIsMissingBeforeItBegins) {
    struct Case {
        const char* why;
        QString variable;
        QString value; // "": not set
        QString mentions;
    };

    const Case cases[] = {
        {"no certificate", u"PELLORAN_SIGNING_IDENTITY"_s, u""_s, u"PELLORAN_SIGNING_IDENTITY is not set"_s},
        {"a certificate that is not in the keychain", u"PELLORAN_SIGNING_IDENTITY"_s,
         u"Developer ID Application: Somebody"_s, u"keychain has no valid certificate"_s},
        {"no key", u"PELLORAN_NOTARY_KEY"_s, u""_s, u"PELLORAN_NOTARY_KEY is not set"_s},
        {"a key that is not there", u"PELLORAN_NOTARY_KEY"_s, u"/nowhere/key.p8"_s, u"/nowhere/key.p8"_s},
        {"no name of the key", u"PELLORAN_NOTARY_KEY_ID"_s, u""_s, u"PELLORAN_NOTARY_KEY_ID is not set"_s},
        {"no issuer", u"PELLORAN_NOTARY_ISSUER"_s, u""_s, u"PELLORAN_NOTARY_ISSUER is not set"_s},
        {"no Qt", u"PELLORAN_QT"_s, u""_s, u"PELLORAN_QT is not set"_s},
        {"a Qt that is none", u"PELLORAN_QT"_s, u"/nowhere"_s, u"/nowhere/bin/macdeployqt"_s},
        {"no configuration server", u"PELLORAN_CONFIG_SERVER"_s, u""_s, u"PELLORAN_CONFIG_SERVER is not set"_s},
        {"no update server", u"PELLORAN_UPDATE_SERVER"_s, u""_s, u"PELLORAN_UPDATE_SERVER is not set"_s},
        {"notes that are not there", u"PELLORAN_NOTES_ZH"_s, u"/nowhere/zh"_s, u"/nowhere/zh"_s},
        {"another system", u"SYSTEM"_s, u"Linux"_s, u"only a Mac"_s},
        {"changes", u"CHANGES"_s, u" M README.md"_s, u"not committed"_s},
        {"a part of the commits", u"SHALLOW"_s, u"true"_s, u"PELLORAN_BUILD_NUMBER"_s},
    };
    const QProcessEnvironment complete = environment;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        environment = complete;
        if (c.value.isEmpty()) {
            environment.remove(c.variable);
        } else {
            environment.insert(c.variable, c.value);
        }
        const ProgramOutput refused = run();
        EXPECT_EQ(refused.exitCode, 2);
        EXPECT_TRUE(refused.standardError.contains(c.mentions.toUtf8())) << refused.standardError.toStdString();
        EXPECT_EQ(refused.standardError.count('\n'), 1) << refused.standardError.toStdString();
        EXPECT_EQ(deeds(), QStringList());
    }
    environment = complete;
    for (const QString& variable : complete.keys()) {
        if (variable.startsWith(u"PELLORAN_"_s)) {
            environment.remove(variable);
        }
    }
    EXPECT_EQ(run().standardError.count('\n'), 7) << "each in a sentence";
    EXPECT_EQ(run({u"--dry-run"_s}).exitCode, 2) << "also where nothing would be done";
    EXPECT_EQ(run({u"--sign"_s}).exitCode, 2) << "an option that is none";
}

TEST_F(MacPackage, StopsWhereSomethingFails) {
    struct Case {
        const char* why;
        QString variable;
        QString value;
        QString mentions;
        QString never; // what is not done any more
    };

    const Case cases[] = {
        {"it cannot be built", u"FAIL"_s, u"cmake --build"_s, u""_s, u"macdeployqt"_s},
        {"Qt does not come along", u"FAIL"_s, u"macdeployqt "_s, u""_s, u"codesign --"_s},
        {"a library for one kind of processor", u"FAIL"_s, u"libhelp.dylib -verify_arch"_s,
         u"is not for arm64 x86_64"_s, u"codesign --"_s},
        {"a library of this machine", u"NEEDS"_s, u"\\t/opt/homebrew/lib/libz.dylib (x)\\n"_s,
         u"/opt/homebrew/lib/libz"_s, u"codesign --"_s},
        {"a library cannot be signed", u"FAIL"_s, u"(TEAM) %1/build/package/Pelloran.app/Contents/Frameworks/libhelp"_s,
         u""_s, u"--options runtime"_s},
        {"the signature is not valid", u"FAIL"_s, u"codesign --verify"_s, u""_s, u"notarytool"_s},
        {"Apple cannot be reached", u"FAIL"_s, u"notarytool submit"_s, u"Apple did not accept"_s, u"stapler"_s},
        {"Apple does not like it, and notarytool ends well", u"VERDICT"_s, u"Invalid"_s, u"Apple did not accept"_s,
         u"stapler"_s},
        {"no ticket", u"FAIL"_s, u"stapler staple"_s, u""_s, u"hdiutil"_s},
        {"the system would not start it", u"FAIL"_s, u"--type execute"_s, u""_s, u"hdiutil"_s},
        {"the system would not open the image", u"FAIL"_s, u"--type open"_s, u""_s, u"release-info"_s},
        {"the description is refused", u"FAIL"_s, u"release-info"_s, u""_s, u"shasum"_s},
    };
    const QProcessEnvironment fine = environment;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        environment = fine;
        environment.insert(c.variable, QString(c.value).replace(u"%1"_s, folder.path()));
        const ProgramOutput stopped = run();
        EXPECT_EQ(stopped.exitCode, 1) << stopped.standardError.toStdString();
        EXPECT_TRUE(stopped.standardError.contains(c.mentions.toUtf8())) << stopped.standardError.toStdString();
        EXPECT_EQ(calls().filter(c.never), QStringList());
        EXPECT_FALSE(stopped.standardError.contains("Made:"));
    }
    environment = fine;
    environment.insert(u"VERDICT"_s, u"Invalid"_s);
    run();
    EXPECT_TRUE(calls().contains(
        u"xcrun notarytool log abc-1 --key key.p8 --key-id KEYID --issuer ISSUER"_s)) // which tells why
        << calls().join(u'\n').toStdString();
}

TEST_F(MacPackage, WithoutCertificatesItIsForThisMachine) {
    for (const QString& variable : environment.keys()) {
        if (variable.startsWith(u"PELLORAN_"_s) && variable != u"PELLORAN_BUILD_FOLDER") {
            environment.remove(variable);
        }
    }
    environment.insert(u"CHANGES"_s, u" M README.md"_s);
    const ProgramOutput made = run({u"--unsigned"_s});
    ASSERT_EQ(made.exitCode, 0) << made.standardError.toStdString();
    EXPECT_EQ(calls().filter(QRegularExpression(u"^(xcrun|spctl) |--timestamp|--options|--entitlements"_s)),
              QStringList())
        << "the hardened runtime would keep it from loading libraries that nobody in particular has signed";
    EXPECT_EQ(calls().filter(u"codesign --force --sign - "_s).size(), 4);
    EXPECT_TRUE(calls().contains(u"cmake --preset macos -B build -D PELLORAN_BUILD_NUMBER=17 -D "
                                 u"CMAKE_OSX_ARCHITECTURES=arm64"_s));
    EXPECT_TRUE(QFile::exists(path(u"build/package/Pelloran-%1-unsigned.dmg"_s.arg(QStringLiteral(PELLORAN_VERSION)))));
    EXPECT_TRUE(QFile::exists(path(u"build/package/latest.json"_s)));
}

TEST_F(MacPackage, OnlySaysWhatItWouldDo) {
    environment.insert(u"SYSTEM"_s, u"Linux"_s);
    const ProgramOutput said = run({u"--dry-run"_s});
    ASSERT_EQ(said.exitCode, 0) << said.standardError.toStdString();
    EXPECT_EQ(deeds(), QStringList());
    EXPECT_FALSE(QFile::exists(path(u"build"_s)));
    // In the order in which they stand here.
    const QStringList steps{u"cmake --preset macos"_s, u"cmake --build"_s,
                            u"macdeployqt "_s,         u"lipo "_s,
                            u"Contents/PlugIns/"_s,    u"Contents/Frameworks/"_s,
                            u"--options runtime"_s,    u"codesign --verify"_s,
                            u"notarytool submit"_s,    u"stapler staple"_s,
                            u"spctl --assess"_s,       u"hdiutil create"_s,
                            u"codesign --force"_s,     u"notarytool submit"_s,
                            u"stapler staple"_s,       u"--type open"_s,
                            u"release-info"_s,         u"shasum"_s};
    qsizetype at = 0;
    for (const QString& step : steps) {
        const qsizetype next = said.standardOutput.indexOf(step.toUtf8(), at);
        ASSERT_GE(next, 0) << step.toStdString() << " is not where it should be in:\n"
                           << said.standardOutput.toStdString();
        at = next + step.size();
    }
    EXPECT_FALSE(said.standardOutput.contains("secret"));
    const ProgramOutput unsignedOne = run({u"--unsigned"_s, u"--dry-run"_s});
    EXPECT_EQ(unsignedOne.exitCode, 0);
    EXPECT_FALSE(unsignedOne.standardOutput.contains("notarytool"));
}

TEST_F(MacPackage, TakesNotesAndAnotherPlaceOfDownloads) {
    write(u"en.txt"_s, "New", false);
    write(u"zh.txt"_s, "新", false);
    environment.insert(u"PELLORAN_NOTES_EN"_s, path(u"en.txt"_s));
    environment.insert(u"PELLORAN_NOTES_ZH"_s, path(u"zh.txt"_s));
    environment.insert(u"PELLORAN_DOWNLOADS"_s, u"https://cdn.example/dl"_s);
    environment.insert(u"PELLORAN_BUILD_NUMBER"_s, u"99"_s);
    environment.insert(u"SHALLOW"_s, u"true"_s); // no matter, when the number is given
    ASSERT_EQ(run().exitCode, 0);
    const QStringList descriptions = calls().filter(u"release-info"_s);
    ASSERT_EQ(descriptions.size(), 1);
    EXPECT_TRUE(descriptions[0].contains(u"--build 99 "_s));
    EXPECT_TRUE(descriptions[0].endsWith(u" --notes-en en.txt --notes-zh zh.txt --base-url https://cdn.example/dl"_s))
        << descriptions[0].toStdString();
}

} // namespace
} // namespace pelloran
