#pragma once

#include "platform/TextReader.h"
#include "tests/contracts/BackEnd.h"
#include "tests/support/Printing.h"

#include <memory>

namespace pelloran::testing {

// What comes of making a reader, and a picture in which it finds three lines with these hints.
struct ReadScreen {
    std::expected<std::unique_ptr<TextReader>, TextReader::Unavailable> reader;
    QImage picture;
    ReadingHints hints;
};

class TextReaderContract : public ::testing::TestWithParam<BackEnd<ReadScreen>> {
protected:
    // Readers that a build lacks have said so, which is all they owe.
    void SetUp() override {
        if (!given.reader) {
            EXPECT_FALSE(given.reader.error().reason.isEmpty()) << "what is missing is for the user";
            GTEST_SKIP() << "this one reads nothing: " << given.reader.error().reason.toStdString();
        }
    }

    ReadText read(const QImage& image) const { return (*given.reader)->read(image, given.hints); }

    const ReadScreen given = GetParam().make();
};

TEST_P(TextReaderContract, FindsLinesWithinThePictureLeftToRight) {
    const ReadText text = read(given.picture);
    ASSERT_EQ(text.tokens.size(), 3U);
    for (const OCRToken& token : text.tokens) {
        EXPECT_FALSE(token.text.isEmpty());
        EXPECT_EQ(token.text, token.text.trimmed());
        EXPECT_GE(token.confidence, 0);
        EXPECT_LE(token.confidence, 1);
        const QRectF box(token.midX - token.width / 2, token.midY - token.height / 2, token.width, token.height);
        EXPECT_TRUE(QRectF(0, 0, 1, 1).contains(box)) << token.text.toStdString();
    }
    EXPECT_LT(text.tokens[0].midX, text.tokens[1].midX);
    EXPECT_LT(text.tokens[1].midX, text.tokens[2].midX);
    if (text.columns) {
        EXPECT_LT((*text.columns)[0], (*text.columns)[1]);
        EXPECT_LT((*text.columns)[1], (*text.columns)[2]);
    }
}

TEST_P(TextReaderContract, ANullImageHasNoLines) {
    EXPECT_EQ(read(QImage()), ReadText());
    EXPECT_EQ(read(given.picture).tokens.size(), 3U) << "and hurts no other";
    EXPECT_EQ(read(QImage()), ReadText()) << "also where there were lines before";
}

TEST_P(TextReaderContract, ReadsTheSameAgainAlsoWhenItHasForgotten) {
    const auto textsOf = [](const ReadText& text) {
        QStringList texts;
        for (const OCRToken& token : text.tokens) {
            texts.append(token.text);
        }
        return texts;
    };
    const QStringList first = textsOf(read(given.picture));
    EXPECT_EQ(textsOf(read(given.picture)), first);
    (*given.reader)->forget();
    (*given.reader)->forget();
    EXPECT_EQ(textsOf(read(given.picture)), first);
}

TEST_P(TextReaderContract, TakesAnyFormatOfAnImage) {
    for (const QImage::Format format :
         {QImage::Format_RGB32, QImage::Format_ARGB32_Premultiplied, QImage::Format_RGB888, QImage::Format_RGBA64}) {
        SCOPED_TRACE(format);
        (*given.reader)->forget();
        EXPECT_EQ(read(given.picture.convertToFormat(format)).tokens.size(), 3U);
    }
}

TEST_P(TextReaderContract, SaysTheSameOfItselfAlways) {
    const bool scales = (*given.reader)->scalesLinesItself();
    read(given.picture);
    (*given.reader)->forget();
    EXPECT_EQ((*given.reader)->scalesLinesItself(), scales);
}

} // namespace pelloran::testing
