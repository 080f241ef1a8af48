#include "base/FileTree.h"

#include "base/SerialQueue.h"
#include "tests/support/FullDisk.h"
#include "tests/support/NoDescriptors.h"
#include "tests/support/Printing.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QThread>

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <future>
#include <optional>

using namespace Qt::StringLiterals;

namespace pelloran {

namespace {

using ::testing::ElementsAre;

class FileTreeTest : public ::testing::Test {
protected:
    QString at(const QString& name) const { return folder.filePath(name); }

    void write(const QString& name, const QByteArray& content) const {
        ASSERT_TRUE(QDir().mkpath(QFileInfo(at(name)).path()));
        QFile file(at(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write(content), content.size());
    }

    QByteArray read(const QString& name) const {
        QFile file(at(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("nothing");
    }

    QTemporaryDir folder;
};

TEST_F(FileTreeTest, SaysWhatCouldNotBeDoneToWhat) {
    EXPECT_TRUE(FileTree::checked({}, u"move"_s, u"/a"_s));
    const auto failed = FileTree::checked(std::make_error_code(std::errc::permission_denied), u"move"_s, u"/a"_s);
    ASSERT_FALSE(failed);
    EXPECT_EQ(failed.error(), FileTree::Error{u"cannot move /a: Permission denied"_s});
}

TEST_F(FileTreeTest, KnowsWhatIsThere) {
    write(u"file"_s, "");
    ASSERT_TRUE(QFile::link(at(u"nowhere"_s), at(u"link"_s)));
    EXPECT_TRUE(FileTree::exists(at(u"file"_s)));
    EXPECT_TRUE(FileTree::exists(folder.path()));
    EXPECT_TRUE(FileTree::exists(at(u"link"_s))) << "though it leads nowhere";
    EXPECT_FALSE(FileTree::exists(at(u"nowhere"_s)));
}

TEST_F(FileTreeTest, ReadsNothingButFilesOfASize) {
    write(u"empty"_s, "");
    write(u"four"_s, "1234");
    write(u"five"_s, "12345");
    ASSERT_TRUE(QDir().mkdir(at(u"folder"_s)));
    ASSERT_EQ(::mkfifo(qPrintable(at(u"pipe"_s)), 0600), 0);
    ASSERT_TRUE(QFile::link(at(u"loop"_s), at(u"loop"_s)));
    ASSERT_TRUE(QFile::link(at(u"four"_s), at(u"link"_s)));

    struct Case {
        const char* why;
        QString name;
        QByteArray content;
        QString reason; // why it is not read
    };

    const Case cases[] = {
        {"empty", u"empty"_s, "", {}},
        {"as much as there may be", u"four"_s, "1234", {}},
        {"by way of a link", u"link"_s, "1234", {}},
        {"one more", u"five"_s, {}, u"larger than 4 bytes"_s},
        {"not there", u"nowhere"_s, {}, u"No such file or directory"_s},
        {"a folder", u"folder"_s, {}, u"it is no file"_s},
        {"a pipe, which is not waited for", u"pipe"_s, {}, u"it is no file"_s},
        {"a link to itself", u"loop"_s, {}, u"Too many levels of symbolic links"_s},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        const auto read = FileTree::read(at(c.name), 4);
        if (c.reason.isEmpty()) {
            EXPECT_EQ(read, c.content);
        } else {
            ASSERT_FALSE(read);
            EXPECT_EQ(read.error().description, u"cannot read %1: %2"_s.arg(at(c.name), c.reason));
        }
    }
    const testing::NoDescriptors none;
    const auto read = FileTree::read(at(u"four"_s), 4);
    ASSERT_FALSE(read);
    EXPECT_TRUE(read.error().description.endsWith(u": Too many open files"_s))
        << read.error().description.toStdString();
}

TEST_F(FileTreeTest, KnowsWhatCannotBeMade) {
    write(u"file"_s, "");
    write(u"fixed"_s, "");
    ASSERT_TRUE(QDir().mkpath(at(u"a/b"_s)));

    struct Case {
        const char* why;
        QString path;
        QString obstacle;
    };

    const Case cases[] = {
        {"a folder", at(u"a"_s), {}},
        {"a new one in it", at(u"a/c/d/e"_s), {}},
        {"a file", at(u"file"_s), {}},
        {"below a file", at(u"file/c/d"_s), at(u"file"_s) + u" is no folder"_s},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(FileTree::obstacleTo(c.path), c.obstacle) << c.why;
    }
    EXPECT_FALSE(FileTree::exists(at(u"a/c"_s))) << "nothing is tried";
    if (::geteuid() != 0) { // who may write everything
        ASSERT_TRUE(QFile::setPermissions(at(u"fixed"_s), QFile::ReadOwner));
        EXPECT_EQ(FileTree::obstacleTo(at(u"fixed"_s)), at(u"fixed"_s) + u" may not be written"_s);
    }
}

TEST_F(FileTreeTest, MakesFoldersWithThoseAbove) {
    EXPECT_TRUE(FileTree::makeFolders(at(u"a/b/c"_s)));
    EXPECT_TRUE(FileTree::makeFolders(at(u"a/b/c"_s))) << "again";
    EXPECT_TRUE(QFileInfo(at(u"a/b/c"_s)).isDir());
    write(u"file"_s, "");
    EXPECT_EQ(FileTree::makeFolders(at(u"file"_s)).error().description,
              u"cannot make the folder "_s + at(u"file"_s) + u": Not a directory"_s);
    EXPECT_FALSE(FileTree::makeFolders(at(u"file/below"_s)));
}

TEST_F(FileTreeTest, MakesAFolderForUsAlone) {
    const mode_t before = ::umask(0); // of a user who allows everybody everything
    const auto made = FileTree::makePrivateFolder(at(u"a/b"_s));
    const auto again = FileTree::makePrivateFolder(at(u"a/b"_s));
    QDir().mkdir(at(u"c"_s));
    QFile::link(at(u"c"_s), at(u"link"_s));
    const auto linked = FileTree::makePrivateFolder(at(u"link"_s));
    ::umask(before);
    EXPECT_TRUE(made);
    EXPECT_EQ(QFile::permissions(at(u"a/b"_s)) & ~(QFile::ReadUser | QFile::WriteUser | QFile::ExeUser),
              QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    ASSERT_FALSE(again) << "it may be anybody's";
    EXPECT_EQ(again.error().description, u"cannot make the folder "_s + at(u"a/b"_s) + u": File exists"_s);
    EXPECT_FALSE(linked) << "it may lead anywhere";
}

TEST_F(FileTreeTest, RemovesWhateverIsThere) {
    write(u"outside"_s, "stays");
    write(u"tree/a/b"_s, "");
    write(u"tree/closed/c"_s, "");
    ASSERT_TRUE(QFile::link(at(u"outside"_s), at(u"tree/link"_s)));
    write(u"protected/d"_s, "stays");
    ASSERT_EQ(::chmod(qPrintable(at(u"protected"_s)), 0500), 0);
    for (const QString& link : {u"tree/folder"_s, u"top"_s}) {
        ASSERT_TRUE(QFile::link(at(u"protected"_s), at(link)));
    }
    QFile::setPermissions(at(u"tree/closed"_s), QFileDevice::ReadOwner | QFileDevice::ExeOwner);
    QFile::setPermissions(at(u"tree"_s), {});
    EXPECT_TRUE(FileTree::removeTree(at(u"tree"_s)));
    EXPECT_FALSE(FileTree::exists(at(u"tree"_s)));
    EXPECT_EQ(read(u"outside"_s), "stays") << "a link is no part of a tree";
    EXPECT_TRUE(FileTree::removeTree(at(u"top"_s))) << "a link to a folder, itself";
    EXPECT_FALSE(FileTree::exists(at(u"top"_s)));
    struct stat found{};
    ASSERT_EQ(::stat(qPrintable(at(u"protected"_s)), &found), 0);
    EXPECT_EQ(found.st_mode & 07777U, 0500U) << "nobody's rights change by a link";
    EXPECT_EQ(read(u"protected/d"_s), "stays");
    ::chmod(qPrintable(at(u"protected"_s)), 0700); // so that the folder of all can go
    EXPECT_TRUE(FileTree::removeTree(at(u"outside"_s))) << "a file";
    EXPECT_TRUE(FileTree::removeTree(at(u"outside"_s))) << "nothing";
}

TEST_F(FileTreeTest, WritesAllOrNothing) {
    EXPECT_TRUE(FileTree::writeAtomically(at(u"file"_s), "first"));
    EXPECT_TRUE(FileTree::writeAtomically(at(u"file"_s), "second"));
    EXPECT_EQ(read(u"file"_s), "second");
    const auto failed = FileTree::writeAtomically(at(u"no/such/folder"_s), "x");
    ASSERT_FALSE(failed);
    EXPECT_TRUE(failed.error().description.startsWith(u"cannot write "_s + at(u"no/such/folder"_s) + u": "_s));
    EXPECT_THAT(QDir(folder.path()).entryList(QDir::Files), ElementsAre(u"file"_s));
}

// A few bytes wait in a buffer, and only its last write tells that there is no room for them.
TEST_F(FileTreeTest, ReplacesNothingOnAFullDisk) {
    write(u"file"_s, "first");
    {
        const FullDisk full;
        const auto failed = FileTree::writeAtomically(at(u"file"_s), "second");
        ASSERT_FALSE(failed);
        EXPECT_EQ(failed.error(), FileTree::Error{u"cannot write %1: File too large"_s.arg(at(u"file"_s))});
        EXPECT_FALSE(FileTree::writeAtomically(at(u"new"_s), "bytes"));
    }
    EXPECT_EQ(read(u"file"_s), "first");
    EXPECT_THAT(QDir(folder.path()).entryList(QDir::Files), ElementsAre(u"file"_s));
}

TEST_F(FileTreeTest, CopiesFilesAndFolders) {
    const QByteArray large(600'000, 'x'); // more than one block
    write(u"from/a/large"_s, large);
    write(u"from/.hidden"_s, "h");
    ASSERT_TRUE(QDir().mkpath(at(u"from/empty"_s)));
    EXPECT_TRUE(FileTree::copyTree(at(u"from"_s), at(u"to"_s)));
    EXPECT_EQ(read(u"to/a/large"_s), large);
    EXPECT_EQ(read(u"to/.hidden"_s), "h");
    EXPECT_TRUE(QFileInfo(at(u"to/empty"_s)).isDir());
    write(u"other/.hidden"_s, "mine");
    EXPECT_FALSE(FileTree::copyTree(at(u"from/.hidden"_s), at(u"other/.hidden"_s))) << "nothing is written over";
    EXPECT_EQ(read(u"other/.hidden"_s), "mine");
    EXPECT_FALSE(FileTree::copyTree(at(u"missing"_s), at(u"copy"_s)));
    const QString unreadable = u"/proc/self/mem"_s; // opens, and fails at the first byte
    if (QFileInfo::exists(unreadable)) {
        EXPECT_FALSE(FileTree::copyTree(unreadable, at(u"half"_s)));
        EXPECT_FALSE(FileTree::exists(at(u"half"_s))) << "half a copy";
    }
}

TEST_F(FileTreeTest, GoesThroughAFolderUntilOneFails) {
    write(u"tree/a"_s, "");
    write(u"tree/b"_s, "");
    QStringList names;
    EXPECT_TRUE(FileTree::forEachNameIn(at(u"tree"_s), [&](const QString& name) -> FileTree::Done {
        names.append(name);
        return {};
    }));
    names.sort();
    EXPECT_EQ(names, (QStringList{u"a"_s, u"b"_s}));
    int calls = 0;
    const auto failed = FileTree::forEachNameIn(at(u"tree"_s), [&](const QString&) -> FileTree::Done {
        ++calls;
        return std::unexpected(FileTree::Error{u"no"_s});
    });
    EXPECT_EQ(failed.error().description, u"no"_s);
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(FileTree::forEachNameIn(at(u"none"_s), {}).error().description,
              u"cannot read "_s + at(u"none"_s) + u": No such file or directory"_s);
}

TEST_F(FileTreeTest, StopsOnAThreadThatIsToEnd) {
    write(u"tree/a"_s, "");
    std::promise<void> begun;
    std::optional<FileTree::Done> copied;
    auto queue = SerialQueue::create(u"test"_s);
    queue->submit(
        [&] {
            begun.set_value();
            while (!QThread::currentThread()->isInterruptionRequested()) {
                QThread::msleep(1);
            }
            copied = FileTree::copyTree(at(u"tree"_s), at(u"copy"_s));
        },
        nullptr, [] {});
    begun.get_future().wait();
    queue.reset();
    ASSERT_TRUE(copied);
    EXPECT_EQ(copied->error().description, u"interrupted"_s);
}

TEST_F(FileTreeTest, RemovesAtTheEndOfAScope) {
    write(u"tree/a"_s, "");
    {
        const FileTree::Removal removal(at(u"tree"_s));
        EXPECT_TRUE(FileTree::exists(at(u"tree"_s)));
    }
    EXPECT_FALSE(FileTree::exists(at(u"tree"_s)));
}

} // namespace

} // namespace pelloran
