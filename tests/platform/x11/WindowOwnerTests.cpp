#include "platform/x11/WindowOwner.h"

#include "tests/support/Printing.h"

#include <QCoreApplication>
#include <QFileInfo>

#include <gtest/gtest.h>

#include <limits>

namespace pelloran::x11 {

namespace {

TEST(IsLauncher, KnowsWhatStartsOtherPrograms) {
    struct Case {
        const char* windowClass;
        bool expected;
    };

    const Case cases[] = {
        {"steam_app_1234567890", true}, {"steam_app_default", true},  {"Steam_App_1", true}, {"explorer.exe", true},
        {"Explorer.exe", true},         {"wine64-preloader", true},   {"Wine", true},        {"Hearthstone", false},
        {"hearthstone.exe", false},     {"hearthstone", false},       {"steam", false},      {"winecfg.exe", false},
        {"myexplorer.exe", false},      {"steam_application", false}, {"", false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.windowClass);
        EXPECT_EQ(isLauncher(QString::fromUtf8(c.windowClass)), c.expected);
    }
}

TEST(ProgramName, ComesFromTheCommandLineThenFromTheShortName) {
    struct Case {
        const char* why;
        QByteArray commandLine;
        QByteArray shortName;
        const char* expected;
    };

    const Case cases[] = {
        {"as Wine writes it", QByteArrayLiteral("C:\\Program Files (x86)\\Hearthstone\\Hearthstone.exe\0-launch\0"),
         "Hearthstone.exe\n", "Hearthstone"},
        {"a Windows path with slashes", QByteArrayLiteral("Z:/home/me/Games/Hearthstone.EXE\0"), "", "Hearthstone"},
        {"a Chinese folder", QByteArrayLiteral("C:\\炉石传说\\Hearthstone.exe\0"), "", "Hearthstone"},
        {"a program of the system", QByteArrayLiteral("/usr/bin/gedit\0notes.txt\0"), "gedit\n", "gedit"},
        {"no folder", QByteArrayLiteral("gedit\0"), "gedit\n", "gedit"},
        {"longer than the short name can be", QByteArrayLiteral("/opt/a-rather-long-program-name\0"),
         "a-rather-long-p\n", "a-rather-long-program-name"},
        {"not ended by a NUL", "/usr/bin/gedit", "", "gedit"},
        {"a loader before its program",
         QByteArrayLiteral("/usr/bin/wine64-preloader\0/usr/bin/wine64\0"
                           "C:\\Games\\Hearthstone.exe\0-x\0"),
         "wine64-preloade\n", "Hearthstone"},
        {"a desktop before its program", QByteArrayLiteral("C:\\windows\\explorer.exe\0/desktop=x\0Hearthstone.exe\0"),
         "explorer.exe\n", "Hearthstone"},
        {"a loader that renamed its process", QByteArrayLiteral("wine64-preloader\0"), "Hearthstone.exe\n",
         "Hearthstone"},
        {"nothing but a loader", QByteArrayLiteral("/usr/bin/wine\0"), "", "wine"},
        {"no command line (or a zombie)", "", "Hearthstone.exe\n", "Hearthstone"},
        {"nothing known", "", "", ""},
        {"only a folder", QByteArrayLiteral("/usr/bin/\0"), "name\n", "name"},
        {"bytes that are no text", QByteArrayLiteral("/x/\xff\xfe.exe\0"), "", "\xef\xbf\xbd\xef\xbf\xbd"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        EXPECT_EQ(programName(c.commandLine, c.shortName), QString::fromUtf8(c.expected));
    }
}

TEST(ProgramName, OfARunningProcess) {
    EXPECT_EQ(programName(static_cast<std::uint32_t>(QCoreApplication::applicationPid())),
              QFileInfo(QCoreApplication::applicationFilePath()).fileName());
    EXPECT_EQ(programName(0U), std::nullopt);
    EXPECT_EQ(programName(std::numeric_limits<std::uint32_t>::max()), std::nullopt);
}

} // namespace

} // namespace pelloran::x11
