#include "sync/TarListing.h"

#include "tests/support/Printing.h"

#include <gtest/gtest.h>

#include <variant>

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

} // namespace

} // namespace pelloran
