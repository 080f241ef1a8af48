#include "platform/tesseract/TesseractLineReader.h"

#include "reading/LineCropper.h"
#include "reading/PaintedText.h"
#include "support/Printing.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace pelloran {

namespace {

PictureShape shapeFor(Script script) {
    return script == Script::latin ? PictureShape{36, 0.16} : PictureShape{48, 0.22};
}

QImage pictureOf(const QString& word, Script script) {
    QImage image = testing::wood(400, 100);
    testing::paintWord(image, QPoint(200, 50), word, 32);
    const auto line = cleanLine(testing::planeOf(image), QRect(20, 30, 360, 40), 1, {});
    return imageOf(line ? picture(*line, shapeFor(script)) : Plane(16, 16, 255));
}

QImage grey(int width, int height, int value) {
    return imageOf(Plane(width, height, std::uint8_t(value)));
}

TEST(LineReaderTest, MissingDataNamesThePackagesToInstall) {
    const QTemporaryDir empty;
    const auto reader = TesseractLineReader::createFrom(empty.path());
    ASSERT_FALSE(reader);
    EXPECT_TRUE(reader.error().contains(QStringLiteral("tesseract-ocr-eng"))) << reader.error().toStdString();
    EXPECT_TRUE(reader.error().contains(QStringLiteral("tesseract-ocr-chi-sim"))) << reader.error().toStdString();
}

TEST(LineReaderTest, MissingDataIsToldOnceAndOnlyByTheError) {
    const QTemporaryDir folder;
    QFile half(folder.filePath(QStringLiteral("eng.traineddata")));
    ASSERT_TRUE(half.open(QIODevice::WriteOnly));
    ::testing::internal::CaptureStderr();
    const auto oneMissing = TesseractLineReader::createFrom(folder.path());
    half.copy(folder.filePath(QStringLiteral("chi_sim.traineddata")));
    const auto unusable = TesseractLineReader::createFrom(folder.path());
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
    ASSERT_FALSE(oneMissing);
    EXPECT_FALSE(oneMissing.error().contains(QStringLiteral("tesseract-ocr-eng")));
    EXPECT_TRUE(oneMissing.error().contains(QStringLiteral("tesseract-ocr-chi-sim")));
    ASSERT_FALSE(unusable) << "empty files";
    EXPECT_TRUE(unusable.error().contains(QStringLiteral("tesseract-ocr-eng")));
}

TEST(LineReaderTest, AnswersStandInTheOrderOfTheWork) {
    const auto reader = LineReader::create();
    ASSERT_TRUE(reader) << reader.error().toStdString();
    const QStringList words{QStringLiteral("TITLE"), QStringLiteral("LIFE"), QStringLiteral("HILT"),
                            QStringLiteral("FILE"), QStringLiteral("LEFT")};
    std::vector<LineReader::Work> work;
    for (const QString& word : words) {
        work.push_back({pictureOf(word, Script::latin), Script::latin});
    }
    for (int round = 0; round < 3; ++round) {
        const std::vector<LineReading> readings = (*reader)->read(work);
        ASSERT_EQ(readings.size(), work.size());
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
    for (const Script script : {Script::latin, Script::chinese}) {
        const int height = shapeFor(script).height;
        const auto readings = (*reader)->read(
            {{grey(16, height, 255), script}, {grey(16, height, 0), script}, {grey(4000, height, 255), script}});
        EXPECT_EQ(readings.size(), 3U);
        EXPECT_LE(readings[0].text.size(), 1) << "blank paper";
    }
    EXPECT_TRUE((*reader)->read({}).empty());
}

} // namespace

} // namespace pelloran
