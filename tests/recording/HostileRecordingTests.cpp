#include "recording/Format.h"
#include "tests/recording/RecordedDraft.h"

#include <QImage>

#include <gtest/gtest.h>

#include <random>

// Recordings that nobody recorded: they are refused with a sentence, or gone through.
namespace pelloran {
namespace {

using testing::ColorReader;
using testing::RecordedDraft;

class HostileRecording : public ::testing::Test {
protected:
    HostileRecording() {
        play(draft);
        draft.end();
    }

    QString inPart(const char* name) const {
        return draft.path() + QStringLiteral("/part-000001/") + QString::fromLatin1(name);
    }

    void replace(const char* name, const QByteArray& bytes) const {
        QFile::remove(inPart(name));
        QFile file(inPart(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }

    QString refusal() const {
        const auto replayed = draft.replay();
        EXPECT_FALSE(replayed.outcome);
        return replayed.outcome ? QString() : replayed.outcome.error();
    }

    RecordedDraft draft;
};

TEST_F(HostileRecording, IsRefusedWithoutAPart) {
    QDir(draft.path()).removeRecursively();
    EXPECT_TRUE(refusal().endsWith(QStringLiteral("is no folder")));
    QDir().mkpath(draft.path());
    EXPECT_TRUE(refusal().endsWith(QStringLiteral("holds no recording")));
}

TEST_F(HostileRecording, LeadsNowhereElse) {
    for (const char* name : {"cards.json", "classes.json", "0.png", "events.jsonl"}) {
        SCOPED_TRACE(name);
        QFile::remove(inPart("kept"));
        ASSERT_TRUE(QFile::rename(inPart(name), inPart("kept")));
        ASSERT_TRUE(QFile::link(inPart("kept"), inPart(name)));
        EXPECT_TRUE(refusal().contains(QStringLiteral("is a link")));
        QFile::remove(inPart(name));
        EXPECT_FALSE(refusal().isEmpty()) << "missing";
        ASSERT_TRUE(QDir().mkpath(inPart(name)));
        EXPECT_FALSE(refusal().isEmpty()) << "a folder";
        ASSERT_TRUE(QDir().rmdir(inPart(name)));
        ASSERT_TRUE(QFile::rename(inPart("kept"), inPart(name)));
    }
    ASSERT_TRUE(QFile::rename(draft.path() + QStringLiteral("/part-000001"), draft.home.path() + QStringLiteral("/x")));
    ASSERT_TRUE(QFile::link(draft.home.path() + QStringLiteral("/x"), draft.path() + QStringLiteral("/part-000001")));
    EXPECT_TRUE(refusal().contains(QStringLiteral("is a link")));
}

TEST_F(HostileRecording, HasNoBrokenPictures) {
    QImage other(10, 10, QImage::Format_RGB32);
    other.fill(Qt::red);
    ASSERT_TRUE(other.save(inPart("0.png"), "PNG"));
    EXPECT_TRUE(refusal().contains(QStringLiteral("not as large as")));
    replace("0.png", "no picture at all");
    EXPECT_TRUE(refusal().contains(QStringLiteral("0.png")));
    QFile png(inPart("1.png"));
    ASSERT_TRUE(png.open(QIODevice::ReadOnly));
    const QByteArray torn = png.read(png.size() / 2);
    replace("0.png", torn);
    EXPECT_TRUE(refusal().contains(QStringLiteral("0.png")));
}

TEST_F(HostileRecording, HasNoBrokenDataAndNoBrokenLines) {
    replace("cards.json", "{\"cards\": 3}");
    EXPECT_TRUE(refusal().contains(QStringLiteral("cards.json")));
    QFile events(inPart("events.jsonl"));
    ASSERT_TRUE(events.open(QIODevice::ReadOnly));
    const QByteArray whole = events.readAll();
    events.close();
    replace("cards.json", R"({"cards": [{"card_id": "X", "name_en": "Y"}]})");
    replace("events.jsonl", whole + "nonsense\n{}\n");
    EXPECT_TRUE(refusal().contains(QStringLiteral("line 15 is no JSON")));
    replace("events.jsonl", "");
    EXPECT_TRUE(refusal().contains(QStringLiteral("has no beginning")));
    const QByteArray header = whole.left(whole.indexOf('\n') + 1);
    replace("events.jsonl", header + R"({"at":1,"reads":[{"same":true}]})"
                                     "\n");
    EXPECT_TRUE(refusal().contains(QStringLiteral("repeats a reading that is not there")));
    replace("events.jsonl", header + QByteArray(recording::largestLine * 2, ' '));
    EXPECT_TRUE(refusal().contains(QStringLiteral("longer than")));
}

TEST_F(HostileRecording, IsSpokenOfByTheNameOfItsFolder) {
    struct Case {
        const char* why;
        QByteArray bytes;
        qint64 size;
        QString refusal;
    };

    const Case cases[] = {
        {"a line of no JSON", "{\n", 2, QStringLiteral(": line 1 is no JSON")},
        {"too many bytes", {}, recording::largestEventFile + 1, QStringLiteral(" has more than 67108864 bytes")},
    };
    // What a message must not take for places of its own.
    const QString moved = draft.home.path() + QStringLiteral("/%1 and %2");
    ASSERT_TRUE(QDir().rename(draft.path(), moved));
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        QFile file(moved + QStringLiteral("/part-000001/events.jsonl"));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(c.bytes);
        ASSERT_TRUE(file.resize(c.size));
        file.close();
        const auto replayed = RecordedDraft::replayOf(moved, [](ColorReader&) {});
        ASSERT_FALSE(replayed.outcome);
        EXPECT_TRUE(replayed.outcome.error().startsWith(file.fileName() + c.refusal))
            << replayed.outcome.error().toStdString();
    }
}

// One byte anywhere: it is refused or gone through, in no more than the time it takes.
TEST_F(HostileRecording, DoesNoHarmWhereverABitIsChanged) {
    QFile events(inPart("events.jsonl"));
    ASSERT_TRUE(events.open(QIODevice::ReadOnly));
    const QByteArray whole = events.readAll();
    events.close();
    std::mt19937 random(11);
    for (int round = 0; round < 60; ++round) {
        QByteArray changed = whole;
        const auto place = std::uniform_int_distribution<qsizetype>(0, whole.size() - 1)(random);
        changed[place] = char(changed[place] ^ (1 << (round % 8)));
        replace("events.jsonl", changed);
        const auto replayed = draft.replay();
        EXPECT_TRUE(replayed.outcome || !replayed.outcome.error().isEmpty());
    }
}

} // namespace
} // namespace pelloran
