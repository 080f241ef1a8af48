#include "platform/posix/PrivateFolder.h"

#include "tests/support/Printing.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace pelloran {
namespace {

TEST(PrivateRuntimeFolder, IsTheSessionsOrOneOfOurOwn) {
    const QTemporaryDir session;
    const QTemporaryDir temporary;
    EXPECT_EQ(privateRuntimeFolder(session.path(), temporary.path()), session.path());
    EXPECT_EQ(existingPrivateRuntimeFolder(session.path(), temporary.path()), session.path());
    const QTemporaryDir shared;
    ASSERT_EQ(::chmod(QFile::encodeName(shared.path()).constData(), 0777), 0);
    QFile file(session.filePath(QStringLiteral("file")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    for (const QString& none : {QString(), QStringLiteral("relative"), session.filePath(QStringLiteral("missing")),
                                file.fileName(), shared.path()}) {
        SCOPED_TRACE(none.toStdString());
        EXPECT_EQ(existingPrivateRuntimeFolder(none, temporary.path()), QString()) << "not there yet, and not made";
        const QString own = privateRuntimeFolder(none, temporary.path());
        EXPECT_EQ(existingPrivateRuntimeFolder(none, temporary.path()), own);
        ASSERT_TRUE(own.startsWith(temporary.path() + u'/'));
        EXPECT_EQ(QFileInfo(own).permissions() & (QFile::ReadGroup | QFile::WriteGroup | QFile::ExeGroup |
                                                  QFile::ReadOther | QFile::WriteOther | QFile::ExeOther),
                  QFile::Permissions());
        EXPECT_EQ(privateRuntimeFolder(none, temporary.path()), own) << "and again";
        ASSERT_EQ(::chmod(QFile::encodeName(own).constData(), 0777), 0);
        EXPECT_EQ(privateRuntimeFolder(none, temporary.path()), QString()) << "open to others";
        ASSERT_EQ(::chmod(QFile::encodeName(own).constData(), 0700), 0);
        EXPECT_EQ(privateRuntimeFolder(none, temporary.path()), own);
        if (::geteuid() == 0) { // nobody else can give a folder away
            constexpr uid_t nobody = 65534;
            ASSERT_EQ(::chown(QFile::encodeName(own).constData(), nobody, gid_t(-1)), 0);
            EXPECT_EQ(privateRuntimeFolder(none, temporary.path()), QString()) << "somebody else's";
            EXPECT_EQ(existingPrivateRuntimeFolder(none, temporary.path()), QString());
            EXPECT_EQ(privateRuntimeFolder(own, session.path()), session.path() + QStringLiteral("/pelloran-0"))
                << "nor is the session's, where it is somebody else's";
        }
        ASSERT_TRUE(QFile::remove(own) || QDir(own).removeRecursively());
        ASSERT_TRUE(QFile::link(session.path(), own));
        EXPECT_EQ(privateRuntimeFolder(none, temporary.path()), QString()) << "a link that somebody laid there";
        ASSERT_TRUE(QFile::remove(own));
    }
}

} // namespace
} // namespace pelloran
