#include "base/DiskSync.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace pelloran {

namespace {

// Whether the bytes would survive shows only at a loss of power.
TEST(DiskSync, TakesFilesAndFoldersAndSaysWhatIsMissing) {
    const QTemporaryDir folder;
    const std::filesystem::path root = folder.path().toStdString();
    QFile file(folder.filePath(u"a"_s));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_EQ(file.write("x"), 1);
    file.close();
    EXPECT_EQ(syncToDisk(root / "a"), std::error_code());
    EXPECT_EQ(syncToDisk(root), std::error_code());
    EXPECT_EQ(syncToDisk(root / "b"), std::errc::no_such_file_or_directory);
    ASSERT_TRUE(file.setPermissions(QFileDevice::ReadOwner));
    EXPECT_EQ(syncToDisk(root / "a"), std::error_code()) << "needs no right to write";
}

} // namespace

} // namespace pelloran
