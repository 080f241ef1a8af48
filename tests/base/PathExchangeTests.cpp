#include "base/PathExchange.h"

#include "tests/support/Printing.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace pelloran {

namespace {

class PathExchangeTest : public ::testing::Test {
protected:
    std::filesystem::path path(const QString& name) const { return folder.filePath(name).toStdString(); }

    void makeFolderWith(const QString& name, const QString& fileName) const {
        ASSERT_TRUE(QDir(folder.path()).mkpath(name));
        QFile file(folder.filePath(name + u'/' + fileName));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    }

    QStringList contentOf(const QString& name) const {
        return QDir(folder.filePath(name)).entryList(QDir::AllEntries | QDir::NoDotAndDotDot);
    }

    QTemporaryDir folder;
};

TEST_F(PathExchangeTest, FoldersChangePlaces) {
    makeFolderWith(u"a"_s, u"one"_s);
    makeFolderWith(u"b"_s, u"two"_s);
    const std::error_code error = exchangePaths(path(u"a"_s), path(u"b"_s));
    if (error == std::errc::invalid_argument || error == std::errc::function_not_supported) {
        GTEST_SKIP() << "the file system of temporary files cannot exchange folders";
    }
    ASSERT_FALSE(error) << error.message();
    EXPECT_EQ(contentOf(u"a"_s), QStringList{u"two"_s});
    EXPECT_EQ(contentOf(u"b"_s), QStringList{u"one"_s});
}

TEST_F(PathExchangeTest, AMissingFolderIsAnErrorThatChangesNothing) {
    makeFolderWith(u"a"_s, u"one"_s);
    EXPECT_TRUE(exchangePaths(path(u"a"_s), path(u"b"_s)));
    EXPECT_TRUE(exchangePaths(path(u"b"_s), path(u"a"_s)));
    EXPECT_EQ(contentOf(u"a"_s), QStringList{u"one"_s});
    EXPECT_FALSE(std::filesystem::exists(path(u"b"_s)));
}

} // namespace

} // namespace pelloran
