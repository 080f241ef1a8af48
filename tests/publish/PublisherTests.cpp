#include "publish/Publisher.h"

#include "base/Digest.h"
#include "sync/ConfigSync.h"
#include "tests/publish/DataFolder.h"
#include "tests/support/FullDisk.h"
#include "tests/support/Printing.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>

namespace pelloran {
namespace {

using namespace testing;

const QString latest = QStringLiteral("pelloran/latest/");

class Publishing : public ::testing::Test {
protected:
    Publishing() {
        source.write(cardFile, cards, 1'600'000'000);
        source.write(classFile, classes, 1'650'000'000);
    }

    Publication published() const {
        const auto publication = publish(source.path(), target.path(), std::nullopt);
        EXPECT_TRUE(publication) << (publication ? "" : publication.error().join(u'\n').toStdString());
        return publication.value_or(Publication());
    }

    QByteArray onServer(const QString& name) const { return target.read(latest + name); }

    QStringList served() const { return QDir(target.path(latest)).entryList(QDir::Files | QDir::Hidden, QDir::Name); }

    DataFolder source;
    DataFolder target;
};

TEST_F(Publishing, WritesAManifestThatNamesTheBundle) {
    const Publication publication = published();
    EXPECT_TRUE(publication.changed);
    EXPECT_EQ(publication.folder, target.path(QStringLiteral("pelloran/latest")));
    EXPECT_EQ(publication.remarks, QStringList());
    const QByteArray bytes = onServer(QStringLiteral("manifest.json"));
    EXPECT_EQ(publication.manifestBytes, bytes.size());
    const auto manifest = RemoteManifest::fromJson(bytes);
    ASSERT_TRUE(manifest);
    const QByteArray bundle = onServer(manifest->bundleName());
    EXPECT_EQ(publication.bundleBytes, bundle.size());
    const QMap<QString, QString> files{{cardFile, sha256Hex(cards)}, {classFile, sha256Hex(classes)}};
    const QByteArray lines = (files[cardFile] + QStringLiteral("  ") + cardFile + u'\n' + files[classFile] +
                              QStringLiteral("  ") + classFile + u'\n')
                                 .toUtf8();
    const RemoteManifest expected{
        .version = 1,
        .hash = sha256Hex(lines),
        .bundle = QStringLiteral("config-%1.tar.gz").arg(sha256Hex(bundle).first(16)),
        .bundleSha256 = sha256Hex(bundle),
        .updatedAt = QStringLiteral("2022-04-15T05:20:00Z"),
        .fileCount = 2,
        .files = files,
    };
    EXPECT_EQ(*manifest, expected);
    EXPECT_EQ(publication.hash, expected.hash);
    EXPECT_EQ(publication.bundle, expected.bundle);
    EXPECT_EQ(publication.bundleSha256, expected.bundleSha256);
    EXPECT_EQ(publication.updatedAt, expected.updatedAt);
    EXPECT_EQ(publication.fileCount, 2);
    // For who asks by the name that a manifest need not give.
    EXPECT_EQ(onServer(QStringLiteral("config.tar.gz")), bundle);
}

TEST_F(Publishing, AnyWebServerMayReadIt) {
    published();
    for (const QString& name : served()) {
        EXPECT_TRUE(QFile::permissions(target.path(latest + name)).testFlag(QFile::ReadOther)) << name.toStdString();
    }
}

TEST_F(Publishing, GivesTheSameBytesForTheSameInput) {
    const Publication first = published();
    const QByteArray manifest = onServer(QStringLiteral("manifest.json"));
    const DataFolder other;
    const auto second = publish(source.path(), other.path(), std::nullopt);
    ASSERT_TRUE(second);
    EXPECT_EQ(other.read(latest + QStringLiteral("manifest.json")), manifest);
    EXPECT_EQ(other.read(latest + first.bundle), onServer(first.bundle));
}

TEST_F(Publishing, LeavesWhatIsThereAlreadyAlone) {
    published();
    QFile manifest(target.path(latest + QStringLiteral("manifest.json")));
    ASSERT_TRUE(manifest.open(QFile::ReadWrite));
    const QDateTime longAgo = QDateTime::fromSecsSinceEpoch(1'000'000'000);
    ASSERT_TRUE(manifest.setFileTime(longAgo, QFile::FileModificationTime));
    manifest.close();
    EXPECT_FALSE(published().changed);
    EXPECT_EQ(QFileInfo(manifest).lastModified(), longAgo);
}

TEST_F(Publishing, TouchedFilesAreNoNewContent) {
    const Publication first = published();
    source.write(cardFile, cards, 1'680'000'000);
    const Publication second = published();
    EXPECT_EQ(second.hash, first.hash);
    EXPECT_EQ(second.bundle, first.bundle);
    EXPECT_EQ(second.updatedAt, QStringLiteral("2023-03-28T10:40:00Z"));
    EXPECT_TRUE(second.changed);
}

TEST_F(Publishing, KeepsTheBundleThatAClientMayBeAboutToFetch) {
    const QString first = published().bundle;
    source.write(classFile, R"({"classes": []})");
    const QString second = published().bundle;
    EXPECT_NE(second, first);
    const QString fixed = QStringLiteral("config.tar.gz");
    const QString manifest = QStringLiteral("manifest.json");
    QStringList both{first, second, fixed, manifest};
    both.sort();
    EXPECT_EQ(served(), both);
    published();
    EXPECT_EQ(served(), both) << "publishing nothing new is no reason to forget it";
    source.write(classFile, classes + '\n');
    QStringList newest{second, published().bundle, fixed, manifest};
    newest.sort();
    EXPECT_EQ(served(), newest);
}

TEST_F(Publishing, ReplacesAManifestThatCannotBeRead) {
    target.write(latest + QStringLiteral("manifest.json"), "half a mani");
    EXPECT_TRUE(published().changed);
    EXPECT_TRUE(RemoteManifest::fromJson(onServer(QStringLiteral("manifest.json"))));
}

TEST_F(Publishing, WritesNothingWhenAnythingIsWrong) {
    const Publication before = published();
    const QByteArray manifest = onServer(QStringLiteral("manifest.json"));
    const QStringList names = served();
    source.write(classFile, "{");
    EXPECT_FALSE(publish(source.path(), target.path(), std::nullopt));
    EXPECT_EQ(onServer(QStringLiteral("manifest.json")), manifest);
    EXPECT_EQ(served(), names);
    // Clients refuse so many files.
    source.write(classFile, classes);
    for (int i = 0; i < 10'000; ++i) {
        source.write(QStringLiteral("more/%1").arg(i), "");
    }
    const auto tooMany = publish(source.path(), target.path(), std::nullopt);
    ASSERT_FALSE(tooMany);
    EXPECT_TRUE(tooMany.error().first().contains(QStringLiteral("more than"))) << tooMany.error().first().toStdString();
    EXPECT_EQ(served(), names);
}

TEST_F(Publishing, DoesNotPublishWhatItHasPublished) {
    for (const QString& inside :
         {source.path(), source.path(QStringLiteral("www")), source.path(QStringLiteral("a/../www"))}) {
        const auto publication = publish(source.path(), inside, std::nullopt);
        ASSERT_FALSE(publication);
        EXPECT_EQ(publication.error(), QStringList{inside + QStringLiteral(": lies within the folder of data files")});
    }
    EXPECT_TRUE(publish(source.path(), source.path() + QStringLiteral("-www"), std::nullopt));
    QDir(source.path() + QStringLiteral("-www")).removeRecursively();
}

TEST_F(Publishing, ReplacesNoManifestByHalfOfOne) {
    const Publication first = published();
    const QByteArray manifest = onServer(QStringLiteral("manifest.json"));
    source.write(classFile, R"({"classes": []})");
    {
        const FullDisk full(rlim_t(manifest.size()) - 1);
        const auto publication = publish(source.path(), target.path(), std::nullopt);
        ASSERT_FALSE(publication);
        EXPECT_EQ(publication.error(), QStringList(QStringLiteral("cannot write %1: File too large")
                                                       .arg(target.path(latest + QStringLiteral("manifest.json")))));
    }
    EXPECT_EQ(onServer(QStringLiteral("manifest.json")), manifest);
    EXPECT_TRUE(served().contains(first.bundle));
}

TEST_F(Publishing, TellsThatItCannotWrite) {
    target.write(QStringLiteral("pelloran"), "a file where the folder should be");
    const auto publication = publish(source.path(), target.path(), std::nullopt);
    ASSERT_FALSE(publication);
    EXPECT_EQ(publication.error(),
              QStringList{QStringLiteral("cannot make the folder ") + target.path(QStringLiteral("pelloran/latest"))});
}

} // namespace
} // namespace pelloran
