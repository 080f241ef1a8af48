#include "app/doctor/Gather.h"

#include "app/doctor/Bounded.h"
#include "app/doctor/Judgement.h"
#include "app/doctor/TestLine.h"
#include "draft/logs/LogConfig.h"
#include "platform/HttpClient.h"
#include "tests/fakes/FakeApplicationFiles.h"
#include "tests/fakes/FakeHttpClient.h"
#include "tests/fakes/FakeTextReader.h"
#include "tests/fakes/FakeUserDefaults.h"
#include "tests/fakes/FakeWindowServer.h"
#include "tests/support/Printing.h"
#include "tests/support/SampleStore.h"
#include "tests/support/ScriptedServer.h"
#include "tests/support/TestCertificate.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QNetworkProxyFactory>
#include <QScopeGuard>
#include <QSslSocket>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <future>
#include <stdexcept>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace pelloran::doctor {
namespace {

class DoctorGathering : public ::testing::Test {
protected:
    QString write(const QString& name, const QByteArray& bytes) const {
        const QString path = folder.filePath(name);
        EXPECT_TRUE(QDir().mkpath(QFileInfo(path).path()));
        QFile file(path);
        EXPECT_TRUE(file.open(QFile::WriteOnly));
        file.write(bytes);
        return path;
    }

    // A home whose only user of a Wine prefix is "ann".
    Places places() const {
        return {std::nullopt, folder.filePath(u"standard"_s), folder.path(),
                [](const QString& name) { return name == u"USER" ? std::optional(u"ann"_s) : std::nullopt; }};
    }

    // Every file below the folder, to see that nothing was changed.
    QStringList everything() const {
        QStringList all;
        QDirIterator files(folder.path(), QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot,
                           QDirIterator::Subdirectories);
        while (files.hasNext()) {
            const QFileInfo file(files.next());
            all.append(
                u"%1 %2 %3"_s.arg(file.filePath()).arg(file.size()).arg(file.lastModified().toMSecsSinceEpoch()));
        }
        all.sort();
        return all;
    }

    const QTemporaryDir folder;
    const QString session = u".wine/drive_c/Program Files (x86)/Hearthstone/Logs/Hearthstone_2026_04_12_20_00_00/"_s;
    const QString config = u".wine/drive_c/users/ann/AppData/Local/Blizzard/Hearthstone/log.config"_s;
};

TEST_F(DoctorGathering, FindsTheLogs) {
    EXPECT_EQ(gatherLogs(places(), QDateTime::currentDateTime()).folder, std::nullopt);
    const QString arena = write(session + u"Arena.log"_s, "12345");
    const auto before = everything();
    const QDateTime later = QFileInfo(arena).lastModified().addSecs(600);
    const LogsFacts facts = gatherLogs(places(), later);
    ASSERT_TRUE(facts.session);
    EXPECT_EQ(facts.session->name, u"Hearthstone_2026_04_12_20_00_00"_s);
    EXPECT_EQ(facts.session->age, std::chrono::seconds(QDateTime(QDate(2026, 4, 12), QTime(20, 0)).secsTo(later)));
    EXPECT_TRUE(facts.session->arena.isThere);
    EXPECT_EQ(facts.session->arena.size, 5);
    EXPECT_EQ(facts.session->arena.age, 600s);
    EXPECT_EQ(facts.session->arena.error, std::nullopt);
    EXPECT_FALSE(facts.session->loadingScreen.isThere);
    EXPECT_EQ(everything(), before);

    const QDateTime earlier(QDate(2026, 4, 12), QTime(19, 0));
    EXPECT_EQ(gatherLogs(places(), earlier).session->age, std::nullopt) << "begun when a clock was wrong";

    Places named = places();
    named.askedLogsDir = folder.filePath(u"nowhere"_s);
    EXPECT_EQ(gatherLogs(named, later).folder, std::nullopt) << "the one that was named or none";

    write(session + u"Arena.log"_s, "\xFF\xFF");
    EXPECT_EQ(gatherLogs(places(), later).session->arena.error, LogFileError::notText);

    ASSERT_TRUE(QFile::link(u"/nowhere/at/all"_s, folder.filePath(session + u"LoadingScreen.log"_s)));
    const LogFileFact led = gatherLogs(places(), later).session->loadingScreen;
    EXPECT_TRUE(led.isThere);
    EXPECT_EQ(led.error, LogFileError::unreadable);
    EXPECT_EQ(led.reason, u"No such file or directory"_s);
    ASSERT_TRUE(QFile::remove(folder.filePath(session + u"LoadingScreen.log"_s)));

    EXPECT_EQ(facts.others, QStringList());
    ASSERT_TRUE(QDir(folder.path()).mkpath(u"Games/a/drive_c/Program Files (x86)/Hearthstone/Logs"_s));
    const LogsFacts two = gatherLogs(places(), later);
    ASSERT_EQ(two.others.size(), 1);
    EXPECT_NE(two.others.first(), two.folder);
    named.askedLogsDir = two.folder;
    EXPECT_EQ(gatherLogs(named, later).others, QStringList()) << "who names one knows";
}

TEST_F(DoctorGathering, KnowsWhyNoLogsCanBeFound) {
    const QString logs = QFileInfo(QFileInfo(write(session + u"Arena.log"_s, "")).path()).path();
    const QDateTime now = QDateTime::currentDateTime();
    EXPECT_TRUE(gatherLogs(places(), now).session->isFolder);
    ASSERT_TRUE(QDir(QFileInfo(logs).path()).rename(u"Logs"_s, u"Before"_s));
    write(QDir(folder.path()).relativeFilePath(logs) + u"/Hearthstone_2026_04_12.zip"_s, "packed for somebody");
    EXPECT_FALSE(gatherLogs(places(), now).session->isFolder);
    EXPECT_EQ(gatherLogs(places(), now).obstacle, QString());

    const auto allow =
        qScopeGuard([&] { QFile::setPermissions(logs, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner); });
    ASSERT_TRUE(QFile::setPermissions(logs, {}));
    if (QFileInfo(logs).isReadable()) {
        GTEST_SKIP() << "this user may read everything";
    }
    const LogsFacts facts = gatherLogs(places(), now);
    EXPECT_EQ(facts.session, std::nullopt);
    EXPECT_EQ(facts.obstacle, u"Permission denied"_s);
}

TEST_F(DoctorGathering, TakesADateToComeForNow) {
    const QString arena = write(session + u"Arena.log"_s, "");

    struct Row {
        const char* why;
        std::chrono::seconds clock; // from when the log was written
        std::chrono::seconds age;
    };

    const Row rows[] = {
        {"a clock that runs on", 600s, 600s},
        {"put back by a day", -24h, 0s},
        {"put forward by a day", 24h, 24h},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.why);
        const QDateTime now = QFileInfo(arena).lastModified().addSecs(row.clock.count());
        EXPECT_EQ(gatherLogs(places(), now).session->arena.age, row.age);
    }
}

TEST_F(DoctorGathering, LooksAtTheLogConfigAndFixesItWhenAsked) {
    EXPECT_EQ(gatherLogConfig(places(), Fix::yes).path, std::nullopt) << "no game, and nothing to fix";
    write(session + u"Power.log"_s, "");
    EXPECT_FALSE(gatherLogConfig(places(), Fix::no).isThere);

    write(config, "[Arena]\n");
    auto before = everything();
    const LogConfigFacts lacking = gatherLogConfig(places(), Fix::no);
    EXPECT_TRUE(lacking.isThere);
    EXPECT_EQ(lacking.lacks, mergeLogConfig("[Arena]\n")->changes);
    EXPECT_FALSE(lacking.fixed);
    EXPECT_EQ(everything(), before) << "looking changes nothing";

    const LogConfigFacts fixed = gatherLogConfig(places(), Fix::yes);
    EXPECT_TRUE(fixed.fixed);
    EXPECT_EQ(fixed.changes, lacking.lacks);
    EXPECT_TRUE(fixed.lacks.isEmpty());
    EXPECT_TRUE(QFileInfo::exists(fixed.backup));

    ASSERT_TRUE(QFile::setPermissions(folder.filePath(config), QFile::ReadOwner));
    EXPECT_EQ(gatherLogConfig(places(), Fix::no).error, std::nullopt) << "nobody has to write what is complete";
    before = everything();
    const LogConfigFacts again = gatherLogConfig(places(), Fix::yes);
    EXPECT_FALSE(again.fixed);
    EXPECT_TRUE(again.newerThanSession) << "a session of then, without its logs";
    EXPECT_EQ(everything(), before) << "there is nothing to fix";

    write(session + u"Arena.log"_s, "");
    write(session + u"LoadingScreen.log"_s, "");
    EXPECT_FALSE(gatherLogConfig(places(), Fix::no).newerThanSession) << "the game knew what it has to know";

    ASSERT_TRUE(QFile::remove(folder.filePath(config)));
    write(config, "[Arena]\n");
    ASSERT_TRUE(QFile::setPermissions(folder.filePath(config), QFile::ReadOwner));
    for (const Fix fix : {Fix::no, Fix::yes}) {
        const auto error = gatherLogConfig(places(), fix).error;
        ASSERT_TRUE(error) << "told before anybody tries";
        EXPECT_EQ(error->kind, LogConfigError::Kind::isProtected);
    }
    ASSERT_TRUE(QFile::remove(folder.filePath(config)));
    write(config, QByteArray("\xFF\xFE[\0", 4));
    EXPECT_EQ(gatherLogConfig(places(), Fix::no).error->kind, LogConfigError::Kind::notPlainText);
    ASSERT_TRUE(QFile::remove(folder.filePath(config)));
    ASSERT_TRUE(QDir().mkpath(folder.filePath(config)));
    for (const Fix fix : {Fix::no, Fix::yes}) {
        const auto error = gatherLogConfig(places(), fix).error;
        ASSERT_TRUE(error);
        EXPECT_EQ(error->kind, LogConfigError::Kind::noFile);
    }
}

// Another game, which is all well, lies where it is looked for first.
TEST_F(DoctorGathering, FixesNoOtherGameThanTheOneThatWasNamed) {
    write(session + u"Power.log"_s, "");
    write(config, "[Arena]\n");
    const auto before = everything();
    Places named = places();
    named.askedLogsDir = folder.filePath(u"other/drive_c/Program Files (x86)/Hearthstone/Logs"_s); // not there yet
    const LogConfigFacts facts = gatherLogConfig(named, Fix::yes);
    ASSERT_TRUE(facts.path);
    EXPECT_EQ(*facts.path, folder.filePath(u"other/drive_c/users/ann/AppData/Local/Blizzard/Hearthstone/log.config"_s));
    EXPECT_TRUE(facts.fixed);
    ASSERT_TRUE(QDir(folder.filePath(u"other"_s)).removeRecursively());
    EXPECT_EQ(everything(), before);
}

TEST_F(DoctorGathering, TakesThePictureOfTheGame) {
    testing::FakeWindowServer windows;
    const auto none = gatherWindow(windows, u"x"_s);
    ASSERT_TRUE(std::holds_alternative<WindowFacts::None>(none.seen));
    EXPECT_TRUE(std::get<WindowFacts::None>(none.seen).canSeeOthers);

    windows.allowed = CapturePermission::denied;
    EXPECT_FALSE(std::get<WindowFacts::None>(gatherWindow(windows, u"x"_s).seen).canSeeOthers);
    windows.allowed = CapturePermission::granted;

    windows.onScreen = {{.number = 7,
                         .ownerName = u"wine"_s,
                         .name = u"Hearthstone"_s,
                         .layer = 0,
                         .bounds = WindowBounds{0, 0, 800, 600}}};
    EXPECT_TRUE(std::holds_alternative<WindowFacts::Failed>(gatherWindow(windows, u"x"_s).seen));

    QImage image(800, 600, QImage::Format_RGB32);
    image.fill(Qt::black);
    windows.images[7] = image;
    const auto plain = std::get<WindowFacts::Picture>(gatherWindow(windows, u"x"_s).seen);
    EXPECT_EQ(plain.title, u"Hearthstone"_s);
    EXPECT_EQ(plain.owner, u"wine"_s);
    EXPECT_EQ(plain.size, QSize(800, 600));
    EXPECT_TRUE(plain.isPlain);
    image.setPixel(400, 300, qRgb(1, 1, 1));
    windows.images[7] = image;
    EXPECT_FALSE(std::get<WindowFacts::Picture>(gatherWindow(windows, u"x"_s).seen).isPlain);

    windows.onScreen.reset();
    windows.all.reset();
    EXPECT_FALSE(std::get<WindowFacts::None>(gatherWindow(windows, u"x"_s).seen).canSeeOthers);
}

TEST_F(DoctorGathering, KnowsWhichNamesNameNothing) {
    const testing::SampleStore sample(R"({"cards": [
        {"card_id": "A", "name_en": "Fireball", "name_zh": "火球术"},
        {"card_id": "B", "name_en": "Fireball"},
        {"card_id": "C", "name_en": "Ox"},
        {"card_id": "D", "name_en": "1234"},
        {"card_id": "E", "name_en": "Chromaggus the Twice-Born"},
        {"card_id": "F", "name_en": "Fifteen Letterss"}
    ]})",
                                      R"({"classes": [
        {"player_class": "MAGE", "name_zh": "法师", "name_en": "Mage", "hero_names": ["Jaina", "Twin"]},
        {"player_class": "DEMONHUNTER", "name_zh": "恶魔猎手", "name_en": "", "hero_names": ["Twin"]}
    ]})");
    const NamesFacts usual = gatherNames(sample.store, NameLengths::limitedUnlessExact);
    EXPECT_FALSE(usual.strictnessCosts);
    EXPECT_EQ(usual.names, 14U);
    EXPECT_EQ(usual.unmatchable, (QStringList{u"Ox"_s, u"1234"_s, u"Twin"_s}))
        << "too few letters, and a hero of two classes";
    const NamesFacts strict = gatherNames(sample.store, NameLengths::limited);
    EXPECT_TRUE(strict.strictnessCosts);
    EXPECT_EQ(strict.unmatchable, (QStringList{u"Ox"_s, u"1234"_s, u"Chromaggus the Twice-Born"_s,
                                               u"Fifteen Letterss"_s, u"Demon Hunter"_s, u"Twin"_s}))
        << "and too many";
    const testing::SampleStore tooShort(R"({"cards": [{"card_id": "C", "name_en": "Ox"}]})", R"({"classes": []})");
    const NamesFacts shortOnly = gatherNames(tooShort.store, NameLengths::limited);
    EXPECT_EQ(shortOnly.unmatchable, QStringList{u"Ox"_s});
    EXPECT_FALSE(shortOnly.strictnessCosts);
}

TEST_F(DoctorGathering, KnowsWhenFiguresWereTaken) {
    struct Case {
        const char* why;
        const char* text;
        QDateTime expected; // invalid: not known
    };

    const auto utc = [](int hour) { return QDateTime(QDate(2026, 4, 12), QTime(hour, 30), Qt::UTC); };
    const Case cases[] = {
        {"as programs write it", "2026-04-12T20:30:00Z", utc(20)},
        {"of another zone", "2026-04-12T20:30:00+02:00", utc(18)},
        {"with a blank, fractions and white space", " 2026-04-12 20:30:00.000Z\n", utc(20)},
        {"as servers write it", "Sun, 12 Apr 2026 20:30:00 +0000", utc(20)},
        {"a day", "2026-04-12", QDateTime(QDate(2026, 4, 12), QTime(0, 0))},
        {"the samples", "never: sample data, every figure is invented", {}},
        {"none", "", {}},
        {"no day of any calendar", "2026-13-45T00:00:00Z", {}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        const auto time = timeOfFetch(QString::fromUtf8(c.text));
        EXPECT_EQ(time.has_value(), c.expected.isValid());
        EXPECT_EQ(time.value_or(QDateTime()), c.expected);
    }
}

TEST_F(DoctorGathering, ReadsTheDataThatTheProgramWould) {
    const testing::FakeApplicationFiles files(folder.path());
    const QDateTime now = QDateTime::currentDateTime();
    EXPECT_FALSE(gatherData(files, NameLengths::limited, now).data.error.isEmpty()) << "none at all";

    const QString own = u"support/Pelloran/config/winrates/all_classes_LAST_7_DAYS.json"_s;
    write(u"resources/winrates/all_classes_LAST_7_DAYS.json"_s,
          R"({"time_range": "SAMPLE", "cards": [{"card_id": "A", "name_en": "Fireball"}]})");
    write(u"resources/winrates/class_winrates.json"_s, R"({"classes": [{"player_class": "MAGE", "name_zh": "x"}]})");
    const DataAndNames sample = gatherData(files, NameLengths::limited, now);
    EXPECT_EQ(sample.data.error, QString());
    EXPECT_TRUE(sample.data.isSample);
    EXPECT_FALSE(sample.data.isUsersOwn);
    EXPECT_EQ(sample.data.cards, 1U);
    EXPECT_EQ(sample.data.classes, 1U);
    EXPECT_EQ(sample.names.names, 3U) << "two of the class";
    EXPECT_TRUE(sample.data.isAgeOfFile);
    EXPECT_EQ(sample.data.classFile, folder.filePath(u"resources/winrates/class_winrates.json"_s));
    EXPECT_FALSE(sample.data.areClassesSample);
    EXPECT_TRUE(sample.names.unmatchable.isEmpty());

    write(own, "{");
    const DataAndNames broken = gatherData(files, NameLengths::limited, now);
    EXPECT_TRUE(broken.data.error.contains(folder.filePath(own))) << broken.data.error.toStdString();
    EXPECT_TRUE(broken.data.isUsersOwn);
    write(own, R"({"cards": []})");
    EXPECT_EQ(gatherData(files, NameLengths::limited, now).data.error,
              folder.filePath(own) + u": holds no card in any form that is known"_s);

    write(u"resources/winrates/class_winrates.json"_s,
          R"({"selected_params": ["SAMPLE"], "classes": [{"player_class": "MAGE", "name_zh": "x"}]})");
    write(own, R"({"fetched_at": "2026-04-12T20:00:00Z",
                   "cards": [{"card_id": "A", "name_en": "Fireball"}, {"card_id": "B", "name_en": "Frostbolt"}]})");
    const QDateTime later(QDate(2026, 4, 15), QTime(20, 0), Qt::UTC);
    const DataAndNames mixed = gatherData(files, NameLengths::limited, later);
    EXPECT_FALSE(mixed.data.isAgeOfFile);
    EXPECT_EQ(mixed.data.age, 72h);
    EXPECT_TRUE(mixed.data.areClassesSample);
    EXPECT_FALSE(mixed.data.isSample);
    EXPECT_EQ(gatherData(files, NameLengths::limited, later.addDays(-9)).data.age, 0s) << "a clock that is wrong";
    write(u"support/Pelloran/config/winrates/class_winrates.json"_s, R"({"classes": 1})");
    const auto before = everything();
    const DataAndNames mine = gatherData(files, NameLengths::limited, now);
    EXPECT_EQ(mine.data.cards, 2U);
    EXPECT_TRUE(mine.data.isUsersOwn);
    EXPECT_FALSE(mine.data.isSample);
    EXPECT_TRUE(mine.data.remark.contains(u"class_winrates.json"_s));
    EXPECT_EQ(everything(), before);
}

TEST_F(DoctorGathering, AsksTheConfigurationServerOnce) {
    const testing::FakeApplicationFiles files(folder.path());
    const QString server = u"https://server"_s;
    const auto ask = [&](testing::FakeHttpClient& http, const QString& address, bool offline = false) {
        return gatherConfigServer(address, offline, http, files);
    };
    testing::FakeHttpClient http;
    EXPECT_EQ(ask(http, {}).address, QString());
    EXPECT_EQ(ask(http, u"https://config.pelloran.invalid"_s).address, QString()) << "as good as none";
    EXPECT_TRUE(ask(http, server, true).offline);
    EXPECT_TRUE(http.requests.empty());

    EXPECT_EQ(ask(http, server).error, u"Connection refused"_s);
    EXPECT_EQ(http.requests.size(), 1U);

    http.answer(u"https://server/pelloran/latest/manifest.json"_s, 200, R"({"hash": "feedbeefcafe"})");
    const ServerFacts news = ask(http, server);
    EXPECT_TRUE(news.hasNews);
    EXPECT_TRUE(news.answer.contains(u"feedbeef…"_s));

    write(u"support/Pelloran/config/.content_hash"_s, "feedbeefcafe");
    EXPECT_TRUE(ask(http, server).hasNews) << "installed, but the files are gone";
    write(u"support/Pelloran/config/winrates/class_winrates.json"_s, "");
    const auto before = everything();
    EXPECT_FALSE(ask(http, server).hasNews);
    EXPECT_EQ(everything(), before) << "nothing is installed";

    http.answer(u"https://server/pelloran/latest/manifest.json"_s, 200, R"({"hash": ""})");
    EXPECT_EQ(ask(http, server).error, u"Invalid remote manifest"_s);
    EXPECT_EQ(http.requests.size(), 5U) << "one each";
}

// Over a real connection, and judged, for the words are the library's.
TEST_F(DoctorGathering, KnowsABadCertificate) {
    if (!QSslSocket::supportsSsl()) {
        GTEST_SKIP() << "Qt has no TLS here";
    }
    // Loopback is reached without the proxy that this machine may have.
    const bool usedSystems = QNetworkProxyFactory::usesSystemConfiguration();
    QNetworkProxyFactory::setUseSystemConfiguration(false);
    const QSslConfiguration before = QSslConfiguration::defaultConfiguration();
    const auto restore = qScopeGuard([&] {
        QNetworkProxyFactory::setUseSystemConfiguration(usedSystems);
        QSslConfiguration::setDefaultConfiguration(before);
    });

    using testing::CertificateKind;

    struct Case {
        const char* why;
        CertificateKind kind;
        bool isTrusted;
        Finding::State state;
        const char* says;
    };

    constexpr auto problem = Finding::State::problem;
    const Case cases[] = {
        {"made by whoever runs it", CertificateKind::valid, false, problem, "self-signed"},
        {"too old", CertificateKind::expired, true, problem, "expired"},
        {"of another server", CertificateKind::ofAnotherHost, true, problem, "host name"},
        {"as it should be", CertificateKind::valid, true, Finding::State::ok, "its certificate is trusted"},
    };
    const testing::FakeApplicationFiles files(folder.path());
    const testing::FakeUserDefaults defaults;
    const auto http = HttpClient::create();
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        const auto certificate = testing::makeCertificate(c.kind);
        if (!certificate) {
            GTEST_SKIP() << "needs the openssl program";
        }
        QSslConfiguration trusting = before;
        if (c.isTrusted) {
            trusting.addCaCertificate(certificate->issuer);
        }
        QSslConfiguration::setDefaultConfiguration(trusting);
        testing::ScriptedServer server(certificate->server);
        server.on("/pelloran/latest/manifest.json",
                  testing::ScriptedServer::answer("200 OK", {}, R"({"hash": "feedbeefcafe"})"));
        server.on("/download/latest.json", testing::ScriptedServer::answer("200 OK", {}, R"({"version": "0"})"));
        for (const ServerFacts& facts : {gatherConfigServer(server.base(), false, *http, files),
                                         gatherUpdateServer(server.base(), false, defaults)}) {
            const Finding finding = judge(facts);
            EXPECT_EQ(stateName(finding.state), stateName(c.state)) << lineFor(finding).toStdString();
            EXPECT_TRUE(finding.what.contains(QString::fromUtf8(c.says))) << lineFor(finding).toStdString();
            EXPECT_EQ(finding.meaning.contains(u"certificate is not trusted"_s), c.state == problem)
                << lineFor(finding).toStdString();
        }
        EXPECT_EQ(server.requests().size(), c.state == problem ? 0U : 2U) << "nothing is asked of a stranger";
    }
}

TEST_F(DoctorGathering, AsksNoUpdateServerThatIsNone) {
    const testing::FakeUserDefaults defaults;
    EXPECT_EQ(gatherUpdateServer(u"https://update.pelloran.invalid"_s, false, defaults).address, QString());
    EXPECT_TRUE(gatherUpdateServer(u"https://server"_s, true, defaults).offline);
}

TEST_F(DoctorGathering, KnowsWhatCannotBeWritten) {
    const testing::FakeApplicationFiles files(folder.path());
    const testing::FakeUserDefaults defaults;
    for (const FolderFact& fact : gatherFolders(files, defaults).folders) {
        EXPECT_EQ(fact.obstacle, QString()) << fact.path.toStdString();
    }
    EXPECT_TRUE(everything().isEmpty()) << "nothing was made";
    const auto obstacle = [&] { return gatherFolders(files, defaults).folders.front().obstacle; };
    write(u"support/Pelloran/config"_s, "a file in the place of a folder");
    EXPECT_EQ(obstacle(), u"it is no folder"_s);
    ASSERT_TRUE(QFile::remove(folder.filePath(u"support/Pelloran/config"_s)));
    ASSERT_TRUE(QFile::link(u"/nowhere/at/all"_s, folder.filePath(u"support/Pelloran/config"_s)));
    EXPECT_EQ(obstacle(), u"it is no folder"_s) << "a link that leads nowhere";
    ASSERT_TRUE(QDir(folder.filePath(u"support"_s)).removeRecursively());
    write(u"support"_s, "the same above it");
    EXPECT_TRUE(obstacle().contains(u"support is no folder"_s));
}

// The real reader, with the model that ships.
TEST_F(DoctorGathering, ReadsBothTestLines) {
    const auto files = ApplicationFiles::create();
    const ReaderFacts facts = gatherReader(*files);
    if (!facts.error.isEmpty()) {
        GTEST_SKIP() << facts.error.toStdString();
    }
    EXPECT_EQ(facts.latin.read, u"Fireball"_s);
    EXPECT_EQ(facts.chineseError, QString());
    EXPECT_EQ(facts.chinese.read, u"火球术"_s);
}

TEST_F(DoctorGathering, TellsTheReaderWhichNamesThereAre) {
    testing::FakeTextReader reader;
    readTestLine(reader, Script::chinese);
    ASSERT_TRUE(reader.lastHints.names) << "without names no Chinese is read";
    EXPECT_TRUE(reader.lastHints.names->contains(testLineText(Script::chinese)));
    EXPECT_GT(reader.lastHints.names->names().size(), 1U) << "there is something to mistake it for";
    readTestLine(reader, Script::latin);
    EXPECT_FALSE(reader.lastHints.names) << "letters are read one by one";
}

TEST_F(DoctorGathering, ReadsTheTestLineInOneOrTwoWays) {
    const auto token = [](const char* text) { return OCRToken{QString::fromUtf8(text), 1, 0.5, 0.5, 0.1, 0.1}; };

    struct Case {
        const char* why;
        std::vector<OCRToken> tokens;
        QString expected;
    };

    const Case cases[] = {
        {"once", {token("Fireball")}, u"Fireball"_s},
        {"right in one way", {token("Firebal"), token("Fireball")}, u"Fireball"_s},
        {"wrong in two ways", {token("a"), token("b"), token("a")}, u"a / b"_s},
        {"nothing", {}, QString()},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        testing::FakeTextReader reader;
        reader.tokens = c.tokens;
        EXPECT_EQ(readTestLine(reader, Script::latin), c.expected);
    }
}

TEST(WorkApart, IsNotWaitedFor) {
    EXPECT_EQ(beginApart([] { return 7; }).get(), 7);
    EXPECT_THROW(beginApart([]() -> int { throw std::runtime_error("no"); }).get(), std::runtime_error);

    const auto release = std::make_shared<std::promise<void>>();
    {
        auto hanging = beginApart([gate = release->get_future().share(), release] {
            gate.wait();
            return 1;
        });
        EXPECT_EQ(hanging.wait_for(1ms), std::future_status::timeout);
    } // and goes without waiting
    release->set_value();
}

} // namespace
} // namespace pelloran::doctor
