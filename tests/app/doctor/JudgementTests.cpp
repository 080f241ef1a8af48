#include "app/doctor/Judgement.h"

#include "app/doctor/Wording.h"
#include "tests/support/Printing.h"

#include <gtest/gtest.h>

#include <functional>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace pelloran::doctor {
namespace {

using State = Finding::State;

// A finding that asks for something says what; one that does not has nothing to ask for.
void expectFinding(const Finding& finding, State state, const QString& saying) {
    EXPECT_EQ(stateName(finding.state), stateName(state)) << lineFor(finding).toStdString();
    EXPECT_TRUE(QString::fromUtf8(lineFor(finding)).contains(saying)) << lineFor(finding).toStdString();
    EXPECT_FALSE(finding.check.isEmpty());
    for (const QString& sentence : {finding.what, finding.meaning, finding.advice}) {
        if (!sentence.isEmpty() && !sentence.startsWith(u"End it"_s)) {
            EXPECT_TRUE(sentence.endsWith(u'.')) << sentence.toStdString();
            EXPECT_FALSE(sentence.endsWith(u".."_s)) << sentence.toStdString();
        }
    }
    if (state == State::problem) {
        EXPECT_FALSE(finding.advice.isEmpty()) << "what is to be done about it";
    }
}

template <typename Facts>
struct Case {
    const char* why;
    std::function<void(Facts&)> change; // to what is well
    State state;
    QString saying;
};

template <typename Facts>
void judgeAll(const Facts& well, std::initializer_list<Case<Facts>> cases) {
    for (const Case<Facts>& c : cases) {
        SCOPED_TRACE(c.why);
        Facts facts = well;
        c.change(facts);
        expectFinding(judge(facts), c.state, c.saying);
    }
}

TEST(DoctorJudgement, OfTheLogs) {
    LogsFacts well;
    well.folder = u"/logs"_s;
    well.session = SessionFact{u"Hearthstone_1"_s,
                               {},
                               true,
                               {u"Arena.log"_s, true, 12'345, 90s, {}, {}},
                               {u"LoadingScreen.log"_s, true, 500, 2h, {}, {}}};
    judgeAll<LogsFacts>(
        well,
        {
            {"all there", [](auto&) {}, State::ok,
             u"/logs, session Hearthstone_1: Arena.log (12 kB, written 90 seconds ago), LoadingScreen.log (500 bytes, "
             "written 2 hours ago)."_s},
            {"of which the name tells its age", [](auto& facts) { facts.session->age = 3h; }, State::ok,
             u"session Hearthstone_1, begun 3 hours ago: Arena.log"_s},
            {"no folder anywhere", [](auto& facts) { facts.folder.reset(); }, State::problem, u"--logs-dir"_s},
            {"not the one that was named",
             [](auto& facts) {
                 facts.folder.reset();
                 facts.asked = u"/mine"_s;
             },
             State::problem, u"/mine"_s},
            {"the game has never run", [](auto& facts) { facts.session.reset(); }, State::problem,
             u"no session of the game"_s},
            {"told to log nothing",
             [](auto& facts) { facts.session->arena.isThere = facts.session->loadingScreen.isThere = false; },
             State::problem, u"See log.config"_s},
            {"the Arena was not entered yet", [](auto& facts) { facts.session->arena.isThere = false; }, State::note,
             u"Enter the Arena"_s},
            {"no scenes", [](auto& facts) { facts.session->loadingScreen.isThere = false; }, State::note,
             u"no LoadingScreen.log"_s},
            {"no permission",
             [](auto& facts) {
                 facts.session->arena.error = LogFileError::unreadable;
                 facts.session->arena.reason = u"Permission denied"_s;
             },
             State::problem, u"/logs/Hearthstone_1/Arena.log cannot be read: Permission denied."_s},
            {"broken off", [](auto& facts) { facts.session->arena.error = LogFileError::unreadable; }, State::problem,
             u"/logs/Hearthstone_1/Arena.log cannot be read. Pelloran"_s},
            {"the folder may not be listed",
             [](auto& facts) {
                 facts.session.reset();
                 facts.obstacle = u"Permission denied"_s;
             },
             State::problem, u"/logs cannot be listed: Permission denied."_s},
            {"a file that is called as a session",
             [](auto& facts) {
                 facts.session->isFolder = false;
                 facts.session->arena.isThere = facts.session->loadingScreen.isThere = false;
             },
             State::problem, u"/logs/Hearthstone_1 is no folder, so there are no logs in it."_s},
            {"of an absurd size", [](auto& facts) { facts.session->arena.error = LogFileError::tooLarge; },
             State::problem, u"larger than 64 MiB"_s},
            {"garbage", [](auto& facts) { facts.session->loadingScreen.error = LogFileError::notText; }, State::note,
             u"LoadingScreen.log is not text"_s},
            {"of last week", [](auto& facts) { facts.session->arena.age = facts.session->loadingScreen.age = 24h * 7; },
             State::note, u"7 days ago"_s},
            {"the game is there twice", [](auto& facts) { facts.others = {u"/b/Logs"_s, u"/c/Logs"_s}; }, State::ok,
             u"also in /b/Logs, /c/Logs. To follow the game there, name that folder with --logs-dir."_s},
            {"the game is there twice and has not run in one of them",
             [](auto& facts) {
                 facts.session.reset();
                 facts.others = {u"/b/Logs"_s};
             },
             State::problem, u"with --logs-dir. To follow the game there"_s},
            {"of last week, but still written to", [](auto& facts) { facts.session->loadingScreen.age = 24h * 7; },
             State::ok, u"7 days ago"_s},
        });
}

TEST(DoctorJudgement, OfTheGamesLogConfig) {
    using Kind = LogConfigError::Kind;
    LogConfigFacts well;
    well.path = u"/p/log.config"_s;
    well.isThere = true;
    judgeAll<LogConfigFacts>(
        well,
        {
            {"complete", [](auto&) {}, State::ok, u"/p/log.config has both sections."_s},
            {"no game", [](auto& facts) { facts.path.reset(); }, State::note, u"not known where"_s},
            {"missing", [](auto& facts) { facts.isThere = false; }, State::problem, u"--fix"_s},
            {"other values", [](auto& facts) { facts.lacks = {u"[Arena] (was missing)"_s, u"[B] x"_s}; },
             State::problem, u"say otherwise: [Arena] (was missing), [B] x."_s},
            {"a folder of that name",
             [](auto& facts) { facts.error = LogConfigError{Kind::noFile, u"/p/log.config is no file"_s}; },
             State::problem, u"/p/log.config is no file. The game does not write what Pelloran reads. Move"_s},
            {"a link to nowhere", [](auto& facts) { facts.error = LogConfigError{Kind::leadsNowhere, u"x"_s}; },
             State::problem, u"Remove the link"_s},
            {"no right to read it", [](auto& facts) { facts.error = LogConfigError{Kind::unreadable, u"x"_s}; },
             State::problem, u"chmod u+r"_s},
            {"something else of that name", [](auto& facts) { facts.error = LogConfigError{Kind::tooLarge, u"x"_s}; },
             State::problem, u"Move it out of the way"_s},
            {"in UTF-16", [](auto& facts) { facts.error = LogConfigError{Kind::notPlainText, u"x"_s}; }, State::problem,
             u"save it as UTF-8"_s},
            {"no right to its folder",
             [](auto& facts) { facts.error = LogConfigError{Kind::unwritable, u"/p may not be written"_s}; },
             State::problem, u"/p may not be written."_s},
            {"the game started before it", [](auto& facts) { facts.newerThanSession = true; }, State::note,
             u"Restart the game"_s},
            {"fixed",
             [](auto& facts) {
                 facts.fixed = true;
                 facts.changes = QStringList{u"[Arena] (was missing)"_s};
                 facts.backup = u"/p/log.config.bak"_s;
             },
             State::note, u"[Arena] (was missing). What was there is in /p/log.config.bak."_s},
            {"made",
             [](auto& facts) {
                 facts.fixed = true;
                 facts.changes = QStringList{u"[Arena] (was missing)"_s};
             },
             State::note, u"(was missing). The game reads it only when it starts. Restart the game."_s},
            {"not to be written",
             [](auto& facts) {
                 facts.lacks = QStringList{u"[Arena] (was missing)"_s};
                 facts.error = LogConfigError{Kind::isProtected, u"/p/log.config may not be written"_s};
             },
             State::problem, u"chmod u+w"_s},
        });
}

TEST(DoctorJudgement, OfTheGamesWindow) {
    using Picture = WindowFacts::Picture;
    const WindowFacts well{Picture{u"Hearthstone.exe"_s, u"Hearthstone"_s, {1920, 1080}, 12ms, false}};
    judgeAll<WindowFacts>(
        well,
        {
            {"captured", [](auto&) {}, State::ok,
             u"\"Hearthstone\" of Hearthstone.exe, 1920x1080 pixels, found and captured in 12 ms."_s},
            {"words of its own that look like places for others",
             [](auto& facts) { std::get<Picture>(facts.seen).title = u"100%1"_s; }, State::ok,
             u"\"100%1\" of Hearthstone.exe, 1920x1080 pixels, found and captured in 12 ms."_s},
            {"without a title", [](auto& facts) { std::get<Picture>(facts.seen).title.clear(); }, State::ok,
             u"\"Hearthstone.exe\", 1920"_s},
            {"without an owner", [](auto& facts) { std::get<Picture>(facts.seen).owner.clear(); }, State::ok,
             u"\"Hearthstone\", 1920"_s},
            {"black", [](auto& facts) { std::get<Picture>(facts.seen).isPlain = true; }, State::note, u"one colour"_s},
            {"small", [](auto& facts) { std::get<Picture>(facts.seen).size = {639, 480}; }, State::note,
             u"Make it larger"_s},
            {"small, but as large as it has to be",
             [](auto& facts) { std::get<Picture>(facts.seen).size = {640, 480}; }, State::ok, u"640x480"_s},
            {"the game does not run",
             [](auto& facts) { facts.seen = WindowFacts::None{u"no window: start the game"_s, true}; }, State::note,
             u"No window: start the game."_s},
            {"no desktop", [](auto& facts) { facts.seen = WindowFacts::None{u"nothing answers"_s, false}; },
             State::problem, u"Nothing answers."_s},
            {"no picture", [](auto& facts) { facts.seen = WindowFacts::Failed{u"minimised"_s}; }, State::problem,
             u"Minimised."_s},
        });
}

TEST(DoctorJudgement, OfTheTextReader) {
    ReaderFacts well;
    well.latin = {u"Fireball"_s, u"Fireball"_s, 20ms};
    well.chinese = {u"火球术"_s, u"火球术"_s, 9ms};
    judgeAll<ReaderFacts>(
        well, {
                  {"reads", [](auto&) {}, State::ok,
                   u"\"Fireball\" was read as \"Fireball\" in 20 ms, \"火球术\" was read as \"火球术\" in 9 ms."_s},
                  {"no data", [](auto& facts) { facts.error = u"install tesseract-ocr-eng."_s; }, State::problem,
                   u"Install tesseract-ocr-eng."_s},
                  {"no Chinese", [](auto& facts) { facts.chineseError = u"x is missing"_s; }, State::note,
                   u"no data for Chinese: x is missing."_s},
                  {"wrong", [](auto& facts) { facts.latin.read = u"Fjrebel"_s; }, State::problem, u"\"Fjrebel\""_s},
                  {"wrong, and like a place for a number", [](auto& facts) { facts.latin.read = u"F%1"_s; },
                   State::problem, u"was read as \"F%1\" in 20 ms"_s},
                  {"nothing", [](auto& facts) { facts.latin.read.clear(); }, State::problem, u"as \"\""_s},
                  {"wrong in Chinese", [](auto& facts) { facts.chinese.read = u"变形术"_s; }, State::note,
                   u"as \"变形术\" in 9 ms. In a Chinese client"_s},
                  {"nothing in Chinese", [](auto& facts) { facts.chinese.read.clear(); }, State::note,
                   u"Install Pelloran anew"_s},
              });
}

TEST(DoctorJudgement, OfTheDataFiles) {
    DataFacts well;
    well.cardFile = u"/d/cards.json"_s;
    well.configurationFolder = u"/d"_s;
    well.isUsersOwn = true;
    well.cards = 7195;
    well.configurationFolder = u"/home/config"_s;
    well.classFile = u"/d/classes.json"_s;
    well.classes = 11;
    well.age = 24h * 3;
    judgeAll<DataFacts>(well,
                        {
                            {"real ones", [](auto&) {}, State::ok,
                             u"/d/cards.json, fetched 3 days ago: 7195 cards, real figures, 11 classes."_s},
                            {"in folders whose names look like places for numbers",
                             [](auto& facts) {
                                 facts.cardFile = u"/%1/%2/cards.json"_s;
                                 facts.classFile = u"/%3/classes.json"_s;
                             },
                             State::ok,
                             u"/%1/%2/cards.json, fetched 3 days ago: 7195 cards, real figures, 11 classes "
                             "(/%3/classes.json)."_s},
                            {"nobody says since when", [](auto& facts) { facts.isAgeOfFile = true; }, State::ok,
                             u"written 3 days ago"_s},
                            {"classes of elsewhere", [](auto& facts) { facts.classFile = u"/usr/classes.json"_s; },
                             State::ok, u"11 classes (/usr/classes.json)."_s},
                            {"classes of elsewhere that are invented",
                             [](auto& facts) {
                                 facts.classFile = u"/usr/classes.json"_s;
                                 facts.areClassesSample = true;
                             },
                             State::note, u"11 classes (/usr/classes.json, invented samples). What is shown"_s},
                            {"samples", [](auto& facts) { facts.isSample = true; }, State::note, u"invented samples"_s},
                            {"old", [](auto& facts) { facts.age = 24h * 40; }, State::note, u"fetched 40 days ago"_s},
                            {"heroes refused", [](auto& facts) { facts.remark = u"class file x passed over: y"_s; },
                             State::note, u"Class file x passed over: y."_s},
                            {"no heroes", [](auto& facts) { facts.classes = 0; }, State::note,
                             u"Put a class_winrates.json into /home/config."_s},
                            {"the user's file is broken", [](auto& facts) { facts.error = u"/d/cards.json: bad"_s; },
                             State::problem, u"remove it"_s},
                            {"nothing at all",
                             [](auto& facts) {
                                 facts.error = u"not found"_s;
                                 facts.isUsersOwn = false;
                             },
                             State::problem, u"Install Pelloran anew"_s},
                        });
}

TEST(DoctorJudgement, OfTheNames) {
    NamesFacts well;
    well.names = 400;
    judgeAll<NamesFacts>(
        well, {
                  {"all", [](auto&) {}, State::ok, u"Each of 400"_s},
                  {"none to look at", [](auto& facts) { facts.names = 0; }, State::note, u"See the data files"_s},
                  {"a few", [](auto& facts) { facts.unmatchable = QStringList{u"Aa"_s, u"Bb"_s}; }, State::note,
                   u"2 of 400 can never be matched: Aa, Bb."_s},
                  {"many",
                   [](auto& facts) {
                       facts.unmatchable = QStringList{u"A"_s, u"B"_s, u"C"_s, u"D"_s, u"E"_s, u"F"_s, u"G"_s};
                   },
                   State::note, u"A, B, C, D, E and 2 more."_s},
                  {"which no option helps", [](auto& facts) { facts.unmatchable = QStringList{u"A"_s}; }, State::note,
                   u"too few letters, or name several classes"_s},
                  {"by strict lengths",
                   [](auto& facts) {
                       facts.strictnessCosts = true;
                       facts.unmatchable = QStringList{u"A long name"_s};
                   },
                   State::note, u"Leave --strict-lengths away"_s},
              });
}

TEST(DoctorJudgement, OfTheServers) {
    ServerFacts well;
    well.address = u"https://data.example"_s;
    well.answer = u"fine."_s;
    well.took = 80ms;
    judgeAll<ServerFacts>(
        well, {
                  {"answers", [](auto&) {}, State::ok,
                   u"https://data.example answered in 80 ms, its certificate is trusted: fine."_s},
                  {"an address with an escape", [](auto& facts) { facts.address = u"https://data.example/%1F"_s; },
                   State::ok, u"https://data.example/%1F answered in 80 ms, its certificate is trusted: fine."_s},
                  {"none set", [](auto& facts) { facts.address.clear(); }, State::note, u"--config-server"_s},
                  {"none set for updates",
                   [](auto& facts) {
                       facts.address.clear();
                       facts.kind = ServerFacts::Kind::update;
                   },
                   State::note, u"--update-server"_s},
                  {"not asked", [](auto& facts) { facts.offline = true; }, State::note, u"was not asked"_s},
                  {"not reached", [](auto& facts) { facts.error = u"Connection refused"_s; }, State::problem,
                   u"Connection refused. The data files stay"_s},
                  {"a certificate, in Qt's words",
                   [](auto& facts) {
                       facts.error = u"SSL handshake failed: The certificate is self-signed, and untrusted"_s;
                   },
                   State::problem, u"ca-certificates"_s},
                  {"a server that speaks no TLS, in Qt's words",
                   [](auto& facts) { facts.error = u"SSL handshake failed: wrong version number"_s; }, State::problem,
                   u"No secure connection"_s},
                  {"no certificate is to blame where there is none",
                   [](auto& facts) {
                       facts.address = u"http://data.example"_s;
                       facts.error = u"no certificate of ours"_s;
                   },
                   State::problem, u"online"_s},
                  {"no certificate", [](auto& facts) { facts.address = u"http://data.example"_s; }, State::note,
                   u"Use https"_s},
                  {"one's own machine needs none", [](auto& facts) { facts.address = u"http://127.0.0.1:8000"_s; },

                   State::ok, u"http://127.0.0.1:8000 answered in 80 ms: fine."_s},
                  {"new data come by themselves", [](auto& facts) { facts.hasNews = true; }, State::ok, u"fine."_s},
                  {"a new version",
                   [](auto& facts) {
                       facts.hasNews = true;
                       facts.kind = ServerFacts::Kind::update;
                   },
                   State::note, u"menu offers it"_s},
              });
}

TEST(DoctorJudgement, OfOtherStarts) {
    judgeAll<InstanceFacts>({}, {
                                    {"none", [](auto&) {}, State::ok, u"does not run"_s},
                                    {"one",
                                     [](auto& facts) {
                                         facts.process = 77;
                                         facts.answers = true;
                                     },
                                     State::ok, u"process 77 and answers"_s},
                                    {"one that hangs", [](auto& facts) { facts.process = 77; }, State::problem,
                                     u"kill 77, and where it stays: kill -9 77"_s},
                                });
}

TEST(DoctorJudgement, OfTheFolders) {
    const FoldersFacts well{{{u"data files"_s, u"/a"_s, {}}, {u"your choices"_s, u"/b"_s, {}}}};
    judgeAll<FoldersFacts>(
        well, {
                  {"all", [](auto&) {}, State::ok, u"/a (data files), /b (your choices)."_s},
                  {"one cannot be had", [](auto& facts) { facts.folders[1].obstacle = u"/b may not be written"_s; },
                   State::problem, u"Cannot be written: /b (your choices): /b may not be written."_s},
              });
}

TEST(DoctorJudgement, OfTheDesktop) {
    struct DesktopCase {
        const char* why;
        std::function<void(DesktopFacts&)> change;
        std::array<State, 4> states; // display, fonts, compositor, status area
    };

    constexpr State ok = State::ok;
    constexpr State note = State::note;
    const DesktopCase cases[] = {
        {"all well", [](auto&) {}, {ok, ok, ok, ok}},
        {"no Chinese font", [](auto& facts) { facts.hasChineseFont = false; }, {ok, note, ok, ok}},
        {"no compositor", [](auto& facts) { facts.composited = false; }, {ok, ok, note, ok}},
        {"no status area", [](auto& facts) { facts.hasTray = false; }, {ok, ok, ok, note}},
        {"no display", [](auto& facts) { facts.noDisplay = u"no display"_s; }, {State::problem, note, note, note}},
    };
    for (const DesktopCase& c : cases) {
        SCOPED_TRACE(c.why);
        DesktopFacts facts{{}, u":0"_s, u"xcb"_s, {u"1920x1080"_s}, true, true, true};
        c.change(facts);
        const std::vector<Finding> findings = judge(facts);
        ASSERT_EQ(findings.size(), c.states.size());
        for (std::size_t i = 0; i < findings.size(); ++i) {
            expectFinding(findings[i], c.states[i], {});
        }
    }
    const DesktopFacts trayless{{}, u":0"_s, u"xcb"_s, {u"1920x1080"_s}, true, true, false};
    expectFinding(judge(trayless).back(), note, u"starting Pelloran again shows one that was closed."_s);
}

TEST(DoctorJudgement, OfChecksThatWereNotDone) {
    expectFinding(unfinished(u"logs"_s, 10s), State::problem, u"not done after 10 seconds"_s);
    expectFinding(broken(u"logs"_s, u"out of memory"_s), State::problem, u"Out of memory."_s);
    expectFinding(noDesktop(u"no plugin"_s), State::problem, u"No plugin."_s);
    expectFinding(noDesktop({}), State::problem, u"QT_QPA_PLATFORM"_s);
}

TEST(DoctorJudgement, TellsTimesInOneUnit) {
    struct DurationCase {
        std::chrono::seconds duration;
        const char* text;
    };

    const DurationCase cases[] = {
        {0s, "a second"},        {1s, "a second"}, {2s, "2 seconds"}, {119s, "119 seconds"}, {120s, "2 minutes"},
        {119min, "119 minutes"}, {2h, "2 hours"},  {47h, "47 hours"}, {48h, "2 days"},       {24h * 400, "400 days"},
    };
    for (const DurationCase& c : cases) {
        EXPECT_EQ(durationText(c.duration), QString::fromUtf8(c.text));
    }
}

} // namespace
} // namespace pelloran::doctor
