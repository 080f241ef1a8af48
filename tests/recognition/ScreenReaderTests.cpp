#include "recognition/ScreenReader.h"

#include "tests/fakes/FakeTextReader.h"
#include "tests/fakes/FakeWindowServer.h"
#include "tests/support/CollectedLog.h"
#include "tests/support/Printing.h"

#include <gtest/gtest.h>

namespace pelloran {
namespace {

using testing::FakeTextReader;
using testing::FakeWindowServer;

class ScreenReaderTest : public ::testing::Test {
protected:
    ScreenReaderTest() {
        textReader->tokens = {{QStringLiteral("Fireball"), 1, 0.2, 0.5, 0.1, 0.02}};
        textReader->scales = true;
    }

    void showWindow() {
        windowServer->onScreen = {{WindowDescription{
            .number = 5,
            .ownerName = QStringLiteral("Hearthstone"),
            .name = {},
            .layer = 0,
            .bounds = WindowBounds{0, 0, 1920, 1080},
        }}};
        windowServer->images[5] = QImage(192, 108, QImage::Format_RGB32);
    }

    std::unique_ptr<FakeWindowServer> ownedWindowServer = std::make_unique<FakeWindowServer>();
    std::unique_ptr<FakeTextReader> ownedTextReader = std::make_unique<FakeTextReader>();
    FakeWindowServer* windowServer = ownedWindowServer.get();
    FakeTextReader* textReader = ownedTextReader.get();
    bool readerMissing = false;
    int windowServersMade = 0;
    int textReadersMade = 0;
    testing::CollectedLog logged;
    ScreenReader screen{
        [this] {
            ++windowServersMade;
            return std::move(ownedWindowServer);
        },
        [this]() -> std::expected<std::unique_ptr<TextReader>, TextReader::Unavailable> {
            if (readerMissing) {
                return std::unexpected(TextReader::Unavailable{QStringLiteral("install it")});
            }
            ++textReadersMade;
            return std::move(ownedTextReader);
        },
    };
};

TEST_F(ScreenReaderTest, MakesWhatItUsesAtTheFirstNeedAndOnce) {
    EXPECT_EQ(windowServersMade, 0) << "nothing on the thread that makes it";
    EXPECT_EQ(screen.look({}, ReadingHints()).error(), WindowCaptureError::noWindow);
    EXPECT_EQ(windowServersMade, 1);
    EXPECT_EQ(textReadersMade, 0) << "without a window there is nothing to read";
    showWindow();
    for (int look = 0; look < 2; ++look) {
        EXPECT_EQ(screen.look({}, ReadingHints()).value().tokens, textReader->tokens);
    }
    EXPECT_EQ(windowServersMade, 1);
    EXPECT_EQ(textReadersMade, 1);
}

TEST_F(ScreenReaderTest, CapturesButDoesNotReadWithoutHints) {
    showWindow();
    EXPECT_EQ(screen.look({}, std::nullopt), ReadText());
    EXPECT_EQ(windowServer->captures, 1);
    EXPECT_EQ(textReadersMade, 0);
    windowServer->failNext(WindowGone{});
    EXPECT_EQ(screen.look({}, std::nullopt).error(), WindowCaptureError::captureFailed);
}

TEST_F(ScreenReaderTest, HandsOnWhyThereIsNoPicture) {
    showWindow();
    windowServer->failNext(CaptureDenied{});
    EXPECT_EQ(screen.look({}, ReadingHints()).error(), WindowCaptureError::captureFailed);
    windowServer->images[5] = QImage();
    EXPECT_EQ(screen.look({}, ReadingHints()).error(), WindowCaptureError::zeroSize);
}

TEST_F(ScreenReaderTest, TellsOnceOfEachCauseOfNoPicture) {
    const auto told = [this](std::initializer_list<const char*> parts) {
        const QStringList lines = logged.lines();
        logged.clear();
        EXPECT_EQ(std::size_t(lines.size()), parts.size()) << lines.join(u'\n').toStdString();
        qsizetype line = 0;
        for (const char* part : parts) {
            EXPECT_TRUE(lines.value(line++).contains(QString::fromLatin1(part))) << part;
        }
    };
    const auto look = [this](int times) {
        for (int i = 0; i < times; ++i) {
            static_cast<void>(screen.look({}, ReadingHints()));
        }
    };
    look(3);
    told({"no window of the game is found"});

    windowServer->onScreen = std::nullopt;
    windowServer->all = std::nullopt;
    look(2);
    told({"no window can be seen at all"});

    showWindow();
    look(2);
    told({});

    for (int i = 0; i < 3; ++i) {
        windowServer->failNext(WindowServerFailed{"NameWindowPixmap", 8});
    }
    windowServer->failNext(WindowServerFailed{"ShmGetImage", 11});
    windowServer->failNext(WindowGone{});
    look(5);
    told({"NameWindowPixmap (error 8)", "ShmGetImage (error 11)", "closed"});

    look(1);
    windowServer->failNext(WindowGone{});
    look(1);
    told({"closed"}); // what worked in between has failed anew

    windowServer->allowed = CapturePermission::denied;
    windowServer->failNext(CaptureDenied{});
    windowServer->failNext(WindowServerFailed{"GetImage", 8});
    look(2);
    told({"Screen Recording"});
    look(1);
    told({});
}

TEST_F(ScreenReaderTest, TellsOnceOfAMissingReaderAndTriesAgain) {
    showWindow();
    readerMissing = true;
    for (int look = 0; look < 3; ++look) {
        EXPECT_EQ(screen.look({}, ReadingHints()), ReadText());
    }
    EXPECT_EQ(logged.lines(), QStringList{QStringLiteral("install it")});
    readerMissing = false;
    EXPECT_EQ(screen.look({}, ReadingHints()).value().tokens, textReader->tokens);
}

} // namespace
} // namespace pelloran
