#include "tests/desktop/ExpectedFigures.h"
#include "tests/desktop/ServerTest.h"
#include "tests/support/Printing.h"

#include <algorithm>
#include <cmath>

// Figures on a web server, and a program that follows them.
namespace pelloran {
namespace {

using testing::ExpectedFigures;
using testing::Letters;
using testing::ServerTest;
using testing::StaticServer;
using testing::tilesDown;
using testing::until;

QJsonObject readJson(const QString& path) {
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    return QJsonDocument::fromJson(file.readAll()).object();
}

QByteArray bytesOf(const QString& path) {
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    return file.readAll();
}

void writeFile(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size()) << path.toStdString();
}

// The rows with every figure raised by so much.
QJsonArray raised(const QJsonArray& rows, const QStringList& columns, double by) {
    QJsonArray all;
    for (const auto& row : rows) {
        QJsonObject changed = row.toObject();
        for (const QString& column : columns) {
            changed[column] = std::round((changed[column].toDouble() + by) * 100) / 100;
        }
        all.append(changed);
    }
    return all;
}

// Letters and digits alone, without the differences that a reader of single letters cannot see.
QString asRead(const QString& text, Letters letters) {
    QString seen;
    for (const QChar letter : text.toLower()) {
        if (letters == Letters::chinese && letter.unicode() < 0x80) {
            continue; // the digits of a hash, which the reader of Chinese characters knows hardly and the data decide
        }
        if (letter == u'1' || letter == u'i') {
            seen += u'l';
        } else if (letter == u'0') {
            seen += u'o';
        } else if (letter.isLetterOrNumber()) {
            seen += letter;
        }
    }
    return seen;
}

class Sync : public ServerTest {
protected:
    // A folder of data files whose figures are those that ship, raised by so much.
    QString dataRaisedBy(double by) {
        const QString folder = home.path() + QStringLiteral("/raised-by-%1").arg(by);
        const QString shipped = QStringLiteral(PELLORAN_RESOURCES "/winrates/");
        const QString cardFile = QStringLiteral("all_classes_LAST_7_DAYS.json");
        const QString classFile = QStringLiteral("class_winrates.json");
        EXPECT_TRUE(QDir().mkpath(folder + QStringLiteral("/winrates")));
        QJsonObject cards = readJson(shipped + cardFile);
        cards[QStringLiteral("time_range")] = QStringLiteral("LAST_7_DAYS");
        cards[QStringLiteral("cards")] = raised(cards[QStringLiteral("cards")].toArray(),
                                                {QStringLiteral("deck_win_rate"), QStringLiteral("drawn_win_rate"),
                                                 QStringLiteral("played_win_rate"), QStringLiteral("popularity"),
                                                 QStringLiteral("avg_copies_in_deck")},
                                                by);
        writeFile(folder + QStringLiteral("/winrates/") + cardFile, QJsonDocument(cards).toJson());
        QJsonObject classes = readJson(shipped + classFile);
        classes[QStringLiteral("classes")] =
            raised(classes[QStringLiteral("classes")].toArray(),
                   {QStringLiteral("win_rate"), QStringLiteral("pick_rate"), QStringLiteral("pct_7_plus")}, by);
        writeFile(folder + QStringLiteral("/winrates/") + classFile, QJsonDocument(classes).toJson());
        return folder;
    }

    // Puts the folder on the server.
    void publish(const QString& source) {
        const auto output = testing::runProgram(testing::pelloranProgram(),
                                                {QStringLiteral("publish"), source, server.root()}, environment);
        ASSERT_EQ(output.exitCode, 0) << output.standardError.toStdString();
    }

    QString manifestPath() const { return server.root() + QStringLiteral("/pelloran/latest/manifest.json"); }

    QJsonObject manifest() const { return readJson(manifestPath()); }

    void writeManifest(const QJsonObject& content) const {
        server.write(QStringLiteral("pelloran/latest/manifest.json"), QJsonDocument(content).toJson());
    }

    QString bundlePath() const {
        return QStringLiteral("pelloran/latest/") + manifest()[QStringLiteral("bundle")].toString();
    }

    // Of what is on the server, as it is shown.
    QString publishedHash() const {
        return manifest()[QStringLiteral("hash")].toString().left(8) + QStringLiteral("…");
    }

    QString installed(const QString& path) const {
        return home.path() + QStringLiteral("/data/Pelloran/config/") + path;
    }

    // What the program has asked the configuration server so far.
    std::vector<StaticServer::Request> requests() {
        auto all = server.requests();
        std::erase_if(all, [](const StaticServer::Request& request) {
            return !request.path.startsWith(QStringLiteral("/pelloran/latest/"));
        });
        return all;
    }

    // What stands in the panel below its title.
    QString panelMessage(Letters letters) {
        const QImage shown = panelPicture();
        const auto lines = testing::textLines(shown, 0);
        QStringList words;
        for (std::size_t i = 1; i < lines.size(); ++i) {
            words.append(testing::lettersIn(shown, lines[i], letters));
        }
        return words.join(u' ');
    }

    void expectIdleLine(const QString& head) {
        expectLine(head + QStringLiteral(" · Waiting for Arena draft…"), Letters::english);
    }

    // By snapshot and on the screen.
    void expectLine(const QString& line, Letters letters) {
        expectSnapshotWith(line);
        const QString expected = asRead(line, letters);
        const double alike =
            letters == Letters::chinese ? 0.93 : 0.95; // one character in sixteen, two letters in forty
        QString read;
        EXPECT_TRUE(until([&] {
            read = asRead(panelMessage(letters), letters);
            return testing::likeness(read, expected) >= alike && read.size() <= expected.size() * 1.05;
        })) << "read: "
            << read.toStdString();
    }

    void checkByTrayMenu() { checkBy(openTrayMenu()); }

    // Where a game in full screen covers the tray.
    void checkByPanelMenu() { checkBy(openMenu(panelBackground(), 3)); }

    void checkBy(xcb_window_t menu) {
        click(menu, checkConfig);
        EXPECT_TRUE(until([this] { return popups().empty(); })) << "the menu stays";
    }

    // A game with one pick: the usual ones take longer to play to their end.
    void startShortDraft() {
        const QString scenario = home.path() + QStringLiteral("/short.json");
        writeFile(scenario, R"({"name": "short", "steps": [
            {"kind": "idle"},
            {"kind": "heroPick", "offers": ["MAGE", "PALADIN", "WARLOCK"]},
            {"kind": "chooseHero", "choice": "MAGE"},
            {"kind": "cardPick", "offers": ["CS2_029", "EX1_279", "EX1_561"]},
            {"kind": "end"}]})");
        startGame({QStringLiteral("--scenario"), scenario});
    }

    // All three offers are shown with the figures that are in the folder.
    bool hasFiguresOf(const QJsonObject& snapshot, const ExpectedFigures& figures) {
        const QJsonArray tiles = snapshot[QStringLiteral("cards")].toArray();
        const QJsonArray offers = stage.last[QStringLiteral("offers")].toArray();
        for (qsizetype slot = 0; slot < tiles.size(); ++slot) {
            const QJsonArray metrics = tiles[slot][QStringLiteral("metrics")].toArray();
            const QString id = offers[slot][QStringLiteral("id")].toString();
            if (metrics.size() != 5 || !std::ranges::all_of(metrics, [&](const QJsonValue& metric) {
                    return metric[QStringLiteral("value")] ==
                           figures.figure(id, metric[QStringLiteral("kind")].toString());
                })) {
                return false;
            }
        }
        return tiles.size() == 3 && offers.size() == 3;
    }
};

TEST_F(Sync, FollowsWhatIsPublished) {
    publish(dataRaisedBy(1));
    expectedLog = {"[Pelloran] config sync: Config updated (",
                   "[Pelloran] reloaded store cards=", "[Pelloran] config sync: Config is up to date ("};
    server.hold();
    startPanelWithTray(served());
    expectIdleLine(QStringLiteral("Local config · bundled · syncing…"));
    server.release();
    expectIdleLine(QStringLiteral("Config updated · ") + publishedHash());
    EXPECT_EQ(bytesOf(installed(QStringLiteral("winrates/class_winrates.json"))),
              bytesOf(dataRaisedBy(1) + QStringLiteral("/winrates/class_winrates.json")));

    publish(dataRaisedBy(2));
    checkByTrayMenu();
    expectIdleLine(QStringLiteral("Config updated · ") + publishedHash());
    EXPECT_EQ(bytesOf(installed(QStringLiteral("winrates/class_winrates.json"))),
              bytesOf(dataRaisedBy(2) + QStringLiteral("/winrates/class_winrates.json")));
    EXPECT_EQ(requests().size(), 4U) << "two times manifest and bundle";

    checkByTrayMenu();
    expectIdleLine(QStringLiteral("Config up to date · ") + publishedHash());
    const auto all = requests();
    ASSERT_EQ(all.size(), 5U) << "one request while nothing has changed";
    const StaticServer::Request& poll = all.back();
    EXPECT_EQ(poll.path, QStringLiteral("/pelloran/latest/manifest.json"));
    EXPECT_EQ(poll.status, 200);
    EXPECT_EQ(poll.body, bytesOf(manifestPath()).size());
    EXPECT_LT(poll.sent, poll.body + 400);
    EXPECT_LT(poll.received, 400);
    RecordProperty("BytesOfOnePoll",
                   std::to_string(poll.received) + " asked, " + std::to_string(poll.sent) + " answered");
}

TEST_F(Sync, GivesADraftItsNewFiguresWithoutDisturbingIt) {
    const QString before = dataRaisedBy(1);
    const QString after = dataRaisedBy(2);
    publish(before);
    expectedLog = {"[Pelloran] config sync: Config updated (", "[Pelloran] reloaded store cards="};
    startShortDraft();
    startPanel(served());
    expectIdleLine(QStringLiteral("Config updated · ") + publishedHash());
    playToPick(QStringLiteral("cardPick"));
    const ExpectedFigures old(before);
    const ExpectedFigures fresh(after);
    ASSERT_TRUE(hasFiguresOf(pelloran.last, old)) << QJsonDocument(pelloran.last).toJson().toStdString();
    expectPanelSize([](QSize size) { return size == QSize(360, 600); });
    EXPECT_TRUE(until([this] { return tilesDown(panelPicture()) == 3; }));

    publish(after);
    client->watch(panel());
    checkByPanelMenu();
    // Old figures until they are new ones, and nothing else in between.
    const auto changed = pelloran.waitFor([&](const QJsonObject& snapshot) { return !hasFiguresOf(snapshot, old); });
    ASSERT_TRUE(changed) << "the old figures stay";
    EXPECT_TRUE(hasFiguresOf(*changed, fresh)) << QJsonDocument(*changed).toJson().toStdString();
    EXPECT_EQ((*changed)[QStringLiteral("phase")].toString(), QStringLiteral("cardPick"));
    EXPECT_EQ(tilesDown(panelPicture()), 3);
    const std::vector<QSize> sizes = client->sizes();
    EXPECT_TRUE(sizes.empty()) << "a panel that goes blank shrinks; this one to " << sizes.front().height();

    playTo(QStringLiteral("end"));
    expectIdleLine(QStringLiteral("Config updated · ") + publishedHash());
}

TEST_F(Sync, StaysWithItsDataWhileTheServerIsDown) {
    publish(dataRaisedBy(1));
    expectedLog = {
        "[Pelloran] config sync: Config updated (",
        "[Pelloran] reloaded store cards=", "[Pelloran] config sync: Offline, using local config: Connection refused",
        "[Pelloran] config sync: 离线使用本地配置：Connection refused", "[Pelloran] config sync: 已更新配置 ("};
    startPanelWithTray(served());
    const QString hash = publishedHash();
    expectIdleLine(QStringLiteral("Config updated · ") + hash);
    server.stop();
    checkByTrayMenu();
    expectIdleLine(QStringLiteral("Offline local config · ") + hash);
    endPelloran();

    startPanelWithTray(served() + QStringList{QStringLiteral("--language"), QStringLiteral("zh")});
    expectLine(QStringLiteral("离线本地配置 · ") + hash + QStringLiteral(" · 等待进入竞技场选卡界面…"),
               Letters::chinese);
    EXPECT_EQ(pelloran.standardError.count("source=" + installed(QStringLiteral("winrates/")).toUtf8()), 2)
        << "after the sync, and at the second start";

    ASSERT_TRUE(server.start()) << server.errors().toStdString();
    publish(dataRaisedBy(2));
    checkByTrayMenu();
    expectLine(QStringLiteral("配置已更新 · ") + publishedHash() + QStringLiteral(" · 等待进入竞技场选卡界面…"),
               Letters::chinese);
}

TEST_F(Sync, StaysWithItsDataWhenABundleIsDamaged) {
    const QString good = dataRaisedBy(1);
    publish(good);
    const QString hash = publishedHash();
    expectedLog = {"[Pelloran] config sync: Config updated (", "[Pelloran] reloaded store cards=",
                   "[Pelloran] config sync: Offline, using local config: Config package hash mismatch (expected ",
                   "[Pelloran] config sync: Offline, using local config: Failed to extract config: "};
    startShortDraft();
    startPanel(served());
    expectIdleLine(QStringLiteral("Config updated · ") + hash);

    publish(dataRaisedBy(2));
    const QByteArray whole = bytesOf(server.root() + u'/' + bundlePath());
    server.write(bundlePath(), whole.left(whole.size() / 2));
    checkByPanelMenu();
    expectIdleLine(QStringLiteral("Offline local config · ") + hash);
    EXPECT_EQ(pelloran.standardError.count("hash mismatch"), 1);

    QJsonObject unchecked = manifest();
    unchecked.remove(QStringLiteral("bundle_sha256"));
    writeManifest(unchecked);
    checkByPanelMenu();
    EXPECT_TRUE(until([this] { return pelloran.standardError.contains("Failed to extract config"); }));
    EXPECT_TRUE(pelloran.printsAnother());
    expectIdleLine(QStringLiteral("Offline local config · ") + hash);

    playToPick(QStringLiteral("cardPick"));
    EXPECT_TRUE(hasFiguresOf(pelloran.last, ExpectedFigures(good)));
}

} // namespace
} // namespace pelloran
