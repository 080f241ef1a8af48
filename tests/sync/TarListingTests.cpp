#include "sync/TarListing.h"

#include "tests/support/Printing.h"

#include <gtest/gtest.h>

#include <variant>
#include <vector>

using namespace Qt::StringLiterals;

namespace pelloran {

namespace {

// Empty where it succeeded.
QString messageOf(const std::expected<void, ConfigSyncError>& done) {
    return done ? QString() : std::get<ConfigSyncError::ExtractFailed>(done.error().reason).message;
}

struct ListingCase {
    const char* why;
    QByteArray names;
    QByteArray details;
    QString message = {};
};

TEST(TarListing, ReadsBothFamiliesOfTar) {
    const ListingCase cases[] = {
        {"nothing", "", ""},
        {"GNU's", "winrates/\nwinrates/a b\n",
         "drwxr-xr-x 1000/1000         0 2026-01-31 10:00 winrates/\n"
         "-rw-r--r-- 1000/1000       900 2026-01-31 10:00 winrates/a b\n"},
        {"BSD's", "winrates/\nwinrates/a b\n",
         "drwxr-xr-x  0 501    20          0 Jan 31 10:00 winrates/\n"
         "-rw-r--r--  0 501    20        900 Jan 31  2025 winrates/a b\n"},
        {"a date that no calendar has", "a\n", "-rw-r--r-- 0/0 3 4611686018427387904 a\n"},
        {"a year before the first", "a\n", "-rw-r--r-- 0/0 3 -32873-11-12 23:23 a\n"},
        {"as much as allowed", "a\n", "-rw-r--r-- 0/0 536870912 2026-01-31 10:00 a\n"},
        {"as much as allowed, in two", "a\nb\n",
         "-rw-r--r-- 0/0 536870911 2026-01-31 10:00 a\n-rw-r--r-- 0/0 1 2026-01-31 10:00 b\n"},
    };
    for (const ListingCase& c : cases) {
        SCOPED_TRACE(c.why);
        EXPECT_EQ(messageOf(TarListing::check(c.names, c.details)), u""_s);
    }
}

TEST(TarListing, RefusesWhatMustNotBeUnpacked) {
    const QString tooMuch = u"the archive unpacks to more than 512 MiB"_s;
    const QString unreadable = u"the archive's list of contents cannot be read"_s;
    const auto outward = [](const QString& name) {
        return u"\"%1\" in the archive leads out of its folder"_s.arg(name);
    };
    const auto odd = [](const QString& name) {
        return u"\"%1\" in the archive is neither a file nor a folder"_s.arg(name);
    };
    const ListingCase cases[] = {
        {"absolute", "/a\n", "-rw-r--r-- 0/0 1 2026-01-31 10:00 /a\n", outward(u"/a"_s)},
        {"upward", "..\n", "drwxr-xr-x 0/0 0 2026-01-31 10:00 ..\n", outward(u".."_s)},
        {"upward, as a folder", "../\n", "drwxr-xr-x 0/0 0 2026-01-31 10:00 ../\n", outward(u"../"_s)},
        {"no name", "\n", "-rw-r--r-- 0/0 1 2026-01-31 10:00 \n", outward(u""_s)},
        {"a symbolic link", "a\n", "lrwxrwxrwx 0/0 0 2026-01-31 10:00 a -> /\n", odd(u"a"_s)},
        {"a hard link", "a\n", "hrw-r--r-- 0/0 0 2026-01-31 10:00 a link to b\n", odd(u"a"_s)},
        {"a link that calls itself a file", "a\n", "-rw-r--r-- 0/0 0 2026-01-31 10:00 a -> /\n", odd(u"a"_s)},
        {"a device", "a\n", "crw-r--r-- 0/0 1,3 2026-01-31 10:00 a\n", odd(u"a"_s)},
        {"another's details", "a\n", "-rw-r--r-- 0/0 1 2026-01-31 10:00 b\n", odd(u"a"_s)},
        {"the second is the bad one", "a\n../b\n",
         "-rw-r--r-- 0/0 1 2026-01-31 10:00 a\n-rw-r--r-- 0/0 1 2026-01-31 10:00 ../b\n", outward(u"../b"_s)},
        {"a byte too much", "a\n", "-rw-r--r-- 0/0 536870913 2026-01-31 10:00 a\n", tooMuch},
        {"a byte too much, in two", "a\nb\n",
         "-rw-r--r-- 0/0 536870912 2026-01-31 10:00 a\n-rw-r--r-- 0/0 1 2026-01-31 10:00 b\n", tooMuch},
        {"BSD's, a byte too much", "a\n", "-rw-r--r--  0 0 0 536870913 Jan 31 10:00 a\n", tooMuch},
        {"as much as a number holds, twice", "a\nb\n",
         "-rw-r--r-- 0/0 9223372036854775807 x a\n-rw-r--r-- 0/0 9223372036854775807 x b\n", tooMuch},
        {"more than a number holds", "a\n", "-rw-r--r-- 0/0 9223372036854775808 2026-01-31 10:00 a\n", unreadable},
        {"less than nothing", "a\n", "-rw-r--r-- 0/0 -1 2026-01-31 10:00 a\n", unreadable},
        {"no size", "a\n", "-rw-r--r-- a\n", unreadable},
        {"a line less", "a\nb\n", "-rw-r--r-- 0/0 1 2026-01-31 10:00 a\n", unreadable},
        {"a line more", "a\n", "-rw-r--r-- 0/0 1 2026-01-31 10:00 a\n-rw-r--r-- 0/0 1 2026-01-31 10:00 b\n",
         unreadable},
        {"names cut off", "a\n../b", "-rw-r--r-- 0/0 1 2026-01-31 10:00 a\n", unreadable},
        {"details cut off", "a\n", "-rw-r--r-- 0/0 1 2026-01-31 10:00 a\n-rw-", unreadable},
        {"too many names, whatever they are", QByteArray("a\n").repeated(10'001), "",
         u"the archive holds more than 10000 entries"_s},
    };
    for (const ListingCase& c : cases) {
        SCOPED_TRACE(c.why);
        EXPECT_EQ(messageOf(TarListing::check(c.names, c.details)), c.message);
    }
}

// Folders that no entry is of come into being all the same.
TEST(TarListing, CountsTheFoldersWithinNames) {
    struct Case {
        const char* why;
        std::vector<QByteArray> names;
        QString message;
    };

    const auto inFolders = [](const QByteArray& each, int count) {
        std::vector<QByteArray> names;
        for (int i = 0; i < count; ++i) {
            names.push_back(QByteArray::number(i) + each);
        }
        return names;
    };
    const QString tooMany = u"the archive holds more than 10000 entries"_s;
    const Case cases[] = {
        {"files in a folder each, as many as may be", inFolders("/f", 5'000), {}},
        {"one more", inFolders("/f", 5'001), tooMany},
        {"folders that have entries too count once",
         [] {
             std::vector<QByteArray> names;
             for (int i = 0; i < 5'000; ++i) {
                 names.push_back(QByteArray::number(i) + '/');
                 names.push_back(QByteArray::number(i) + "/f");
             }
             return names;
         }(),
         {}},
        {"however they are written", inFolders("/.//./f", 5'000), {}},
        {"a few files with hundreds of folders each", inFolders(QByteArray("/a").repeated(400), 30), tooMany},
        {"the longest name", {QByteArray(1'000, 'x')}, {}},
        {"a longer one", {QByteArray(1'001, 'x')}, u"a name in the archive has more than 1000 bytes"_s},
        {"one of megabytes, which would be told in as many",
         {"../" + QByteArray(5'000'000, 'x')},
         u"a name in the archive has more than 1000 bytes"_s},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        QByteArray names;
        QByteArray details;
        for (const QByteArray& name : c.names) {
            names += name + '\n';
            details += (name.endsWith('/') ? "d" : "-") + ("rw-r--r-- 0/0 0 2026-01-31 10:00 " + name + '\n');
        }
        EXPECT_EQ(messageOf(TarListing::check(names, details)), c.message);
    }
}

} // namespace

} // namespace pelloran
