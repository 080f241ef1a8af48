#pragma once

#include "platform/LineReader.h"
#include "tests/contracts/BackEnd.h"
#include "tests/support/Printing.h"

#include <QStringList>

#include <memory>

namespace pelloran::testing {

// A reader and pictures that say `texts` to it, in that order.
struct ReadPictures {
    std::shared_ptr<void> owned; // what has to live as long
    std::unique_ptr<LineReader> reader;
    std::vector<QImage> pictures;
    QStringList texts;
};

class LineReaderContract : public ::testing::TestWithParam<BackEnd<ReadPictures>> {
protected:
    static QImage blank(int width, int value) {
        QImage image(width, 36, QImage::Format_Grayscale8);
        image.fill(value);
        return image;
    }

    static void expectSound(const std::vector<LineReading>& readings) {
        for (const LineReading& reading : readings) {
            EXPECT_EQ(reading.text, reading.text.trimmed());
            EXPECT_GE(reading.confidence, 0);
            EXPECT_LE(reading.confidence, 1);
        }
    }

    const ReadPictures given = GetParam().make();
};

TEST_P(LineReaderContract, GivesOneReadingForEachPictureInTheirOrder) {
    ASSERT_TRUE(given.reader);
    const auto readings = given.reader->read(given.pictures);
    ASSERT_EQ(readings.size(), given.pictures.size());
    for (std::size_t i = 0; i < readings.size(); ++i) {
        EXPECT_EQ(readings[i].text, given.texts[static_cast<qsizetype>(i)]);
        EXPECT_GT(readings[i].confidence, 0);
    }
    expectSound(readings);
}

TEST_P(LineReaderContract, NoPicturesHaveNoReadings) {
    ASSERT_TRUE(given.reader);
    EXPECT_TRUE(given.reader->read({}).empty());
}

TEST_P(LineReaderContract, PicturesOfNothingHaveReadingsTooAndHurtNoOthers) {
    ASSERT_TRUE(given.reader);
    EXPECT_EQ(given.reader->read(given.pictures).size(), given.pictures.size());
    const auto readings = given.reader->read({blank(16, 255), blank(16, 0), blank(4000, 255)});
    EXPECT_EQ(readings.size(), 3U);
    expectSound(readings);
}

} // namespace pelloran::testing
