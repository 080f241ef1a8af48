#include "publish/Bundle.h"

#include "sync/ConfigInstaller.h"
#include "tests/support/Printing.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace pelloran {
namespace {

SourceFile file(const QString& path, const QByteArray& bytes) {
    return {path, bytes, QDateTime()};
}

TEST(ContentHash, IsThatOfTheLinesOfSha256sum) {
    // printf 'one' >a; printf 'two' >b/c; sha256sum a b/c | sha256sum
    EXPECT_EQ(contentHash({file(QStringLiteral("a"), "one"), file(QStringLiteral("b/c"), "two")}),
              QStringLiteral("2978063142a8ffa542a84cde5ef0261a8ecd99de3dd1186e5d2d020c922f9978"));
}

TEST(ContentHash, FollowsNamesAndContentsAlone) {
    const QString hash = contentHash({file(QStringLiteral("a"), "one")});
    EXPECT_NE(hash, contentHash({file(QStringLiteral("a"), "two")}));
    EXPECT_NE(hash, contentHash({file(QStringLiteral("b"), "one")}));
    SourceFile later = file(QStringLiteral("a"), "one");
    later.modified = QDateTime::fromSecsSinceEpoch(1, Qt::UTC);
    EXPECT_EQ(hash, contentHash({later}));
}

TEST(GzippedTar, IsWhatClientsUnpack) {
    const std::vector<SourceFile> files{
        file(QStringLiteral("empty"), ""),
        file(QStringLiteral("winrates/名.json"), "[1]"),
        file(QStringLiteral("winrates/") + QString(200, u'x') + QStringLiteral("/long"), QByteArray(100'000, 'x')),
    };
    const auto bundle = gzippedTar(files);
    ASSERT_TRUE(bundle) << bundle.error().toStdString();
    const QTemporaryDir folder;
    const QString archive = folder.filePath(QStringLiteral("bundle.tar.gz"));
    QFile out(archive);
    ASSERT_TRUE(out.open(QFile::WriteOnly));
    out.write(*bundle);
    out.close();
    const QString unpacked = folder.filePath(QStringLiteral("unpacked"));
    ASSERT_TRUE(QDir().mkpath(unpacked));
    const auto extracted = ConfigInstaller::extractTarGz(archive, unpacked);
    ASSERT_TRUE(extracted) << extracted.error().localizedDescription().toStdString();
    for (const SourceFile& each : files) {
        SCOPED_TRACE(each.path.toStdString());
        QFile in(unpacked + u'/' + each.path);
        ASSERT_TRUE(in.open(QFile::ReadOnly));
        EXPECT_EQ(in.readAll(), each.bytes);
    }
}

TEST(GzippedTar, EndsWhereGzipEnds) {
    const auto bundle = gzippedTar({file(QStringLiteral("a"), "one")});
    ASSERT_TRUE(bundle);
    QProcess gzip;
    gzip.start(QStringLiteral("gzip"), {QStringLiteral("-t")});
    gzip.write(*bundle);
    gzip.closeWriteChannel();
    ASSERT_TRUE(gzip.waitForFinished());
    EXPECT_EQ(gzip.readAllStandardError(), "");
    EXPECT_EQ(gzip.exitCode(), 0);
}

TEST(GzippedTar, HoldsNoTimeAndNobody) {
    SourceFile earlier = file(QStringLiteral("a"), "one");
    earlier.modified = QDateTime::fromSecsSinceEpoch(1, Qt::UTC);
    SourceFile later = earlier;
    later.modified = QDateTime::fromSecsSinceEpoch(1'700'000'000, Qt::UTC);
    const auto bundle = gzippedTar({earlier});
    ASSERT_TRUE(bundle);
    EXPECT_EQ(*bundle, gzippedTar({later}));
    // Of gzip's header: no flags (so no file name), and a time of zero.
    EXPECT_EQ(bundle->first(8), QByteArray("\x1f\x8b\x08\x00\x00\x00\x00\x00", 8));
}

} // namespace
} // namespace pelloran
