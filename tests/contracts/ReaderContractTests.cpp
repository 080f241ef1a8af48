// The contracts of what reads. Where the system has no reader only the fakes are built, and what a build for such a
// system has instead is in NullContractTests.cpp.
#include "tests/contracts/LineReaderContract.h"
#include "tests/contracts/TextReaderContract.h"
#include "tests/fakes/FakeApplicationFiles.h"
#include "tests/fakes/FakeLineReader.h"
#include "tests/fakes/FakeTextReader.h"
#include "tests/reading/PaintedText.h"
#ifdef PELLORAN_WITH_TESSERACT
#include "reading/LineCropper.h"
#endif

namespace pelloran::testing {

namespace {

using ::testing::Values;

const QStringList words{QStringLiteral("TITLE"), QStringLiteral("LIFE"), QStringLiteral("HILT")};

// Three names where cards have them.
QImage paintedPick() {
    QImage image = wood(1920, 1080);
    const int middles[] = {446, 767, 1097};
    for (int i = 0; i < 3; ++i) {
        paintWord(image, QPoint(middles[i], 450), words[i], 30);
    }
    return image;
}

ReadingHints hints() {
    std::vector<KnownName> names;
    for (const QString& word : words) {
        names.push_back({word, {}});
    }
    return {QRectF(0.08, 0.28, 0.64, 0.5), ReadingHints::Offers::cards, std::nullopt,
            std::make_shared<const Lexicon>(std::move(names), Lexicon::forCards)};
}

ReadScreen fakeTextReader() {
    auto fake = std::make_unique<FakeTextReader>();
    for (int i = 0; i < 3; ++i) {
        fake->tokens.push_back({words[i], 0.9F, 0.2 + 0.2 * i, 0.4, 0.1, 0.03});
    }
    fake->columns = {{0.2, 0.4, 0.6}};
    return {std::move(fake), paintedPick(), hints()};
}

ReadPictures fakeLineReader() {
    auto told = std::make_shared<FakeLineReader::Told>();
    std::vector<QImage> pictures(3, QImage(16, 36, QImage::Format_Grayscale8));
    told->say({words[0] + u' ', words[1], u' ' + words[2]});
    auto reader = std::make_unique<FakeLineReader>(*told);
    return {told, std::move(reader), pictures, words};
}

INSTANTIATE_TEST_SUITE_P(Fake, TextReaderContract, Values(BackEnd<ReadScreen>{"Fake", fakeTextReader}), nameOfBackEnd);
INSTANTIATE_TEST_SUITE_P(Fake, LineReaderContract, Values(BackEnd<ReadPictures>{"Fake", fakeLineReader}),
                         nameOfBackEnd);

#ifdef PELLORAN_TEXT_READER

ReadScreen textReader() {
    return {TextReader::create(FakeApplicationFiles(QStringLiteral(PELLORAN_SOURCES))), paintedPick(), hints()};
}

INSTANTIATE_TEST_SUITE_P(System, TextReaderContract, Values(BackEnd<ReadScreen>{PELLORAN_TEXT_READER, textReader}),
                         nameOfBackEnd);

#endif

#ifdef PELLORAN_WITH_TESSERACT

QImage pictureOf(const QString& word) {
    QImage image = wood(400, 100);
    paintWord(image, QPoint(200, 50), word, 32);
    const auto line = cleanLine(planeOf(image), QRect(20, 30, 360, 40), 1, {});
    return imageOf(line ? pictureOf(*line, {36, 0.16}) : Plane(16, 16, 255));
}

ReadPictures lineReader() {
    auto reader = LineReader::create();
    EXPECT_TRUE(reader) << reader.error().toStdString();
    std::vector<QImage> pictures;
    for (const QString& word : words) {
        pictures.push_back(pictureOf(word));
    }
    return {{}, reader ? *std::move(reader) : nullptr, pictures, words};
}

INSTANTIATE_TEST_SUITE_P(System, LineReaderContract, Values(BackEnd<ReadPictures>{"Tesseract", lineReader}),
                         nameOfBackEnd);

#endif

} // namespace

} // namespace pelloran::testing
