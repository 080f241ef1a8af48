#include "recording/LogText.h"

#include "draft/logs/ArenaLog.h"
#include "draft/logs/LogWatcher.h"
#include "tests/support/Printing.h"

#include <QRegularExpression>

#include <gtest/gtest.h>

#include <random>

namespace pelloran::recording {
namespace {

// What somebody has who was told of every change.
struct Listener {
    QStringList lines;
    QString unfinished;
    bool there = false;

    void hear(const std::optional<LogChange>& change) {
        if (!change) {
            return;
        }
        if (change->anew.value_or(false)) {
            lines.clear();
        }
        there = !change->missing.value_or(false);
        lines += change->lines.value_or(QStringList());
        unfinished = change->unfinished.value_or(QString());
    }

    std::optional<QByteArray> text() const {
        if (!there) {
            return std::nullopt;
        }
        QString all = lines.join(u'\n');
        if (!lines.isEmpty()) {
            all += u'\n';
        }
        return (all + unfinished).toUtf8();
    }
};

DraftState stateOf(const std::optional<QByteArray>& arena) {
    return LogWatcher::stateOf({QStringLiteral("session"), std::nullopt, arena});
}

TEST(LogText, TellsWhatWasAdded) {
    LogText text{Owner()};
    text.update(QByteArray("noise\nDraft 1\r\nmore noise\nDra"));
    auto change = text.takeChange();
    ASSERT_TRUE(change);
    EXPECT_EQ(change->anew, true);
    EXPECT_EQ(change->lines, QStringList{QStringLiteral("Draft 1")});
    EXPECT_EQ(change->unfinished, std::nullopt); // nothing tells yet that it concerns the draft
    EXPECT_EQ(text.takeChange(), std::nullopt);

    text.update(QByteArray("noise\nDraft 1\r\nmore noise\nDraft deck contains"));
    EXPECT_EQ(text.takeChange(), std::nullopt) << "nothing follows from it yet";

    text.update(QByteArray("noise\nDraft 1\r\nmore noise\nDraft deck contains card CS2_029 (X"));
    change = text.takeChange();
    ASSERT_TRUE(change);
    EXPECT_EQ(change->anew, std::nullopt);
    EXPECT_EQ(change->lines, std::nullopt);
    EXPECT_EQ(change->unfinished, QStringLiteral("Draft deck contains card CS2_029 "));

    text.update(QByteArray("Draft 9\n"));
    change = text.takeChange();
    ASSERT_TRUE(change);
    EXPECT_EQ(change->anew, true);
    EXPECT_EQ(change->lines, QStringList{QStringLiteral("Draft 9")});

    text.update(std::nullopt);
    change = text.takeChange();
    ASSERT_TRUE(change);
    EXPECT_EQ(change->missing, true);

    text.forget();
    EXPECT_TRUE(text.takeChange());
}

TEST(LogText, KeepsNoHalfOfAName) {
    LogText text{Owner{{QStringLiteral("/srv/mira"), QStringLiteral("/srv/mi ra")}, {QStringLiteral("mira")}}};
    const QByteArray line = "Draft of Mira#12345 at /srv/mira/x and /srv/mi ra/x, said mira here\n";
    for (qsizetype size = 0; size <= line.size(); ++size) {
        text.update(line.first(size));
        const auto change = text.takeChange().value_or(LogChange());
        const QString kept = change.unfinished.value_or(QString()) + change.lines.value_or(QStringList()).join(u' ');
        EXPECT_FALSE(kept.contains(QStringLiteral("mi"), Qt::CaseInsensitive)) << kept.toStdString();
    }
}

TEST(LogText, LeavesTheGameItsWords) {
    // Whoever is called so would otherwise not be followed when their recording is gone through.
    for (const char* line :
         {"D 1 LoadingScreen.OnSceneLoaded() - prevMode=HUB currMode=DRAFT", "D 1 SetDraftMode - DRAFTING",
          "D 1 DraftManager.OnBegin - Got new draft deck with ID: 7", "D 1 DraftManager.OnChosen(): hero=HERO_08",
          "D 1 DraftManager.OnChoicesAndContents - Draft Deck ID: 5, Hero Card = HERO_01",
          "Draft deck contains card CS2_029", "D 1 Client chooses: Jaina (HERO_08)"}) {
        const QString whole = QString::fromLatin1(line);
        for (const QString& word : whole.split(QRegularExpression(QStringLiteral("\\W+")), Qt::SkipEmptyParts)) {
            SCOPED_TRACE(line + (" " + word.toStdString()));
            LogText text{Owner{{}, {word.toLower()}}};
            text.update((whole + u'\n').toUtf8());
            const auto change = text.takeChange();
            ASSERT_TRUE(change && change->lines);
            DraftState told = LogWatcher::stateOf({QStringLiteral("s"), {}, change->lines->join(u'\n').toUtf8()});
            DraftState said = LogWatcher::stateOf({QStringLiteral("s"), {}, whole.toUtf8()});
            told.lastChoiceName = said.lastChoiceName; // which nothing follows from
            EXPECT_EQ(told, said);
            EXPECT_EQ(lastScene(change->lines->join(u'\n').toUtf8()), lastScene(whole.toUtf8()));
        }
    }
}

TEST(LogText, TellsNoMoreThanIsReadAgain) {
    LogText text{Owner()};
    const QByteArray many = QByteArray("Draft deck contains card CS2_029\n").repeated(30'000); // 1 MB
    text.update("SetDraftMode - DRAFTING\nDraftManager.OnBegin\n" + many);
    auto change = text.takeChange();
    ASSERT_TRUE(change && change->lines);
    EXPECT_LT(change->lines->join(u'\n').size(), 301'000);
    text.update("SetDraftMode - DRAFTING\nDraftManager.OnBegin\n" + many + "DraftManager.OnBegin\n");
    ASSERT_TRUE(text.takeChange());
    text.forget();
    change = text.takeChange();
    ASSERT_TRUE(change && change->lines);
    EXPECT_EQ(*change->lines,
              (QStringList{QStringLiteral("SetDraftMode - DRAFTING"), QStringLiteral("DraftManager.OnBegin")}))
        << "of earlier drafts, the mode";
}

TEST(LogText, TellsNoMoreOfALineWithoutAnEnd) {
    LogText text{Owner()};
    text.update("SetDraftMode - DRAFTING\nDraft " + QByteArray("word ").repeated(1'000'000));
    const auto change = text.takeChange();
    ASSERT_TRUE(change);
    EXPECT_EQ(change->lines, QStringList{QStringLiteral("SetDraftMode - DRAFTING")});
    EXPECT_EQ(change->unfinished, std::nullopt) << "the recording could not be read again";
}

// Whatever the game writes, in whatever pieces it is seen: the draft's state follows from what is kept.
TEST(LogText, KeepsAllThatTheDraftsStateFollowsFrom) {
    const std::vector<QByteArray> pieces{
        "D 1 SetDraftMode - DRAFTING\n",
        "D 1 DraftManager.OnBegin - Got new draft deck with ID: 7\r\n",
        "noise\n",
        "\n",
        "D 1 Client chooses: 吉安娜 (HERO_08)\n",
        "D 1 DraftManager.OnChosen(): hero=HERO_08 premium\n",
        "Draft Deck ID: 9, Hero Card = HERO_02\n",
        "D DraftManager.OnChoicesAndContents - Draft Deck ID: 5, Hero Card = HERO_01\n",
        "Draft deck contains card CS2_029\n",
        "D 1 SetDraftMode - ACTIVE_DRAFT_DECK\n",
        "D 1 Client chooses: A ("};
    std::mt19937 random(7);
    const auto below = [&random](std::size_t end) {
        return std::uniform_int_distribution<std::size_t>(0, end - 1)(random);
    };
    for (int round = 0; round < 300; ++round) {
        LogText text{Owner()};
        Listener listener;
        QByteArray log;
        std::optional<QByteArray> file;
        for (int step = 0; step < 12; ++step) {
            const auto what = below(12);
            if (what == 0) {
                log.clear();
            } else if (what == 1) {
                text.forget();
            }
            for (std::size_t more = below(4); more > 0; --more) {
                log += pieces[below(pieces.size())];
            }
            // Also in the middle of a line; of a character it is not, since the file is no text then.
            qsizetype seen = log.size() - qsizetype(below(20) == 0 ? 0 : below(30));
            seen = std::max<qsizetype>(seen, 0);
            while (!log.first(seen).isValidUtf8()) {
                --seen;
            }
            file = what == 2 ? std::nullopt : std::optional(log.first(seen));
            text.update(file);
            listener.hear(text.takeChange());
            ASSERT_EQ(stateOf(listener.text()), stateOf(file)) << "round " << round << ", step " << step;
        }
    }
}

} // namespace
} // namespace pelloran::recording
