#include "platform/tesseract/TesseractLineReader.h"

#include "reading/LineCropper.h"
#include "tests/reading/PaintedText.h"
#include "tests/support/Printing.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace pelloran {

namespace {

constexpr PictureShape shape{36, 0.16};

QImage pictureOf(const QString& word) {
    QImage image = testing::wood(400, 100);
    testing::paintWord(image, QPoint(200, 50), word, 32);
    const auto line = cleanLine(testing::planeOf(image), QRect(20, 30, 360, 40), 1, {});
    return imageOf(line ? pictureOf(*line, shape) : Plane(16, 16, 255));
}

QImage grey(int width, int height, int value) {
    return imageOf(Plane(width, height, std::uint8_t(value)));
}

TEST(LineReaderTest, MissingDataNamesThePackageToInstall) {
    const QTemporaryDir empty;
    const auto reader = TesseractLineReader::createFrom(empty.path());
    ASSERT_FALSE(reader);
    EXPECT_TRUE(reader.error().contains(QStringLiteral("tesseract-ocr-eng"))) << reader.error().toStdString();
}

TEST(LineReaderTest, UnusableDataIsToldOnceAndOnlyByTheError) {
    const QTemporaryDir folder;
    QFile empty(folder.filePath(QStringLiteral("eng.traineddata")));
    ASSERT_TRUE(empty.open(QIODevice::WriteOnly));
    ::testing::internal::CaptureStderr();
    const auto unusable = TesseractLineReader::createFrom(folder.path());
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
    ASSERT_FALSE(unusable) << "an empty file";
    EXPECT_TRUE(unusable.error().contains(QStringLiteral("tesseract-ocr-eng")));
}

TEST(LineReaderTest, ReadsOnWhenItsDataIsRemoved) {
    const QString systems = QStringLiteral("/usr/share/tesseract-ocr/5/tessdata/eng.traineddata");
    if (!QFile::exists(systems)) {
        GTEST_SKIP() << "copies " << systems.toStdString();
    }
    const QTemporaryDir folder;
    const QString copy = folder.filePath(QStringLiteral("eng.traineddata"));
    ASSERT_TRUE(QFile::copy(systems, copy));
    const auto reader = TesseractLineReader::createFrom(folder.path());
    ASSERT_TRUE(reader) << reader.error().toStdString();
    ASSERT_TRUE(QFile::remove(copy));
    const auto readings = (*reader)->read({pictureOf(QStringLiteral("TITLE")), pictureOf(QStringLiteral("LIFE"))});
    ASSERT_EQ(readings.size(), 2U);
    EXPECT_EQ(readings[0].text, QStringLiteral("TITLE"));
    EXPECT_EQ(readings[1].text, QStringLiteral("LIFE"));
}

TEST(LineReaderTest, AnswersStandInTheOrderOfTheWork) {
    const auto reader = LineReader::create();
    ASSERT_TRUE(reader) << reader.error().toStdString();
    const QStringList words{QStringLiteral("TITLE"), QStringLiteral("LIFE"), QStringLiteral("HILT"),
                            QStringLiteral("FILE"), QStringLiteral("LEFT")};
    std::vector<QImage> pictures;
    for (const QString& word : words) {
        pictures.push_back(pictureOf(word));
    }
    for (int round = 0; round < 3; ++round) {
        const std::vector<LineReading> readings = (*reader)->read(pictures);
        ASSERT_EQ(readings.size(), pictures.size());
        for (std::size_t i = 0; i < readings.size(); ++i) {
            EXPECT_EQ(readings[i].text, words[int(i)]);
            EXPECT_GT(readings[i].confidence, 0.5F);
            EXPECT_LE(readings[i].confidence, 1.0F);
        }
    }
}

TEST(LineReaderTest, OddPicturesAreReadAsLittle) {
    const auto reader = LineReader::create();
    ASSERT_TRUE(reader) << reader.error().toStdString();
    const auto readings =
        (*reader)->read({grey(16, shape.height, 255), grey(16, shape.height, 0), grey(4000, shape.height, 255)});
    ASSERT_EQ(readings.size(), 3U);
    EXPECT_LE(readings[0].text.size(), 1) << "blank paper";
    EXPECT_TRUE((*reader)->read({}).empty());
}

} // namespace

} // namespace pelloran
