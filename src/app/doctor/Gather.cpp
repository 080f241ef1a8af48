#include "app/doctor/Gather.h"

#include "app/doctor/TestLine.h"
#include "app/ServerClients.h"
#include "base/FileTree.h"
#include "data/DataErrorText.h"
#include "data/WinrateStore.h"
#include "draft/logs/LogConfigFile.h"
#include "draft/logs/LogWatcher.h"
#include "model/DraftModel.h"
#include "platform/ApplicationFiles.h"
#include "platform/HttpClient.h"
#include "platform/posix/PrivateFolder.h"
#include "platform/TextReader.h"
#include "platform/UserDefaults.h"
#include "platform/WindowServer.h"
#include "reading/chinese/ChineseLineReader.h"
#include "recognition/CardRecognizer.h"
#include "recognition/WindowCapture.h"
#include "sync/LocalConfig.h"
#include "sync/ManifestRequest.h"
#include "sync/ShortHash.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QSet>
#include <QUrl>

#include <algorithm>
#include <utility>
#include <variant>

using namespace Qt::StringLiterals;

namespace pelloran::doctor {

namespace {

std::chrono::milliseconds elapsed(const QElapsedTimer& timer) {
    return std::chrono::milliseconds(timer.elapsed());
}

std::chrono::seconds ageAt(const QDateTime& time, const QDateTime& now) {
    return std::chrono::seconds(std::max<qint64>(time.secsTo(now), 0));
}

std::optional<QString> logsDirOf(const Places& places) {
    const auto folder = places.askedLogsDir ? places.askedLogsDir
                                            : gameLogsDir(places.standardLogsDir, places.home, places.environment);
    return folder && QFileInfo(*folder).isDir() ? folder : std::nullopt;
}

LogFileFact gatherLogFile(const QString& folder, const QString& name, const QDateTime& now) {
    LogFileFact fact;
    fact.name = name;
    const QFileInfo file(folder + u'/' + name);
    fact.isThere = FileTree::exists(file.filePath());
    if (fact.isThere) {
        fact.size = file.size();
        fact.age = ageAt(file.lastModified(), now);
        if (const auto read = readLogFile(file.filePath(), pauseForWriter); !read) {
            fact.error = read.error();
            fact.reason = whyUnreadable(file.filePath());
        }
    }
    return fact;
}

// As the game writes it into the name of the session's folder.
QDateTime beginningOf(const QString& session) {
    return QDateTime::fromString(QFileInfo(session).fileName(), u"'Hearthstone_'yyyy_MM_dd_HH_mm_ss"_s);
}

// The session there is was begun before `config` was written, and shows it.
bool missedBySession(const QString& logsDir, const QFileInfo& config) {
    const auto session = newestSession(logsDir).value_or(std::nullopt);
    if (!session) {
        return false;
    }
    const QDateTime begun = beginningOf(*session);
    const bool isComplete =
        FileTree::exists(*session + u"/Arena.log"_s) && FileTree::exists(*session + u"/LoadingScreen.log"_s);
    return !isComplete && begun.isValid() && config.lastModified() > begun;
}

// A picture of nothing is what a game gives that draws past the window server.
bool isPlain(const QImage& image) {
    constexpr int steps = 64;
    const QRgb first = image.pixel(0, 0);
    for (int row = 0; row < steps; ++row) {
        for (int column = 0; column < steps; ++column) {
            if (image.pixel(image.width() * column / steps, image.height() * row / steps) != first) {
                return false;
            }
        }
    }
    return true;
}

ReaderFacts::Test tested(TextReader& reader, Script script) {
    QElapsedTimer timer;
    timer.start();
    const QString read = readTestLine(reader, script);
    return {testLineText(script), read, elapsed(timer)};
}

// A build that was given no server has addresses in the domain that is reserved for leading nowhere.
ServerFacts unasked(ServerFacts::Kind kind, const QString& address, bool offline) {
    ServerFacts facts;
    facts.kind = kind;
    facts.offline = offline;
    if (!QUrl(address).host().endsWith(u".invalid"_s)) {
        facts.address = address;
    }
    return facts;
}

// What a check of versions remembers is nobody's wish here.
class ReadOnlyDefaults final : public UserDefaults {
public:
    explicit ReadOnlyDefaults(const UserDefaults& real)
        : defaults(real) {}

    std::optional<QString> string(const QString& key) const override { return defaults.string(key); }

    void setString(const QString&, const QString&) override {}

    void remove(const QString&) override {}

private:
    const UserDefaults& defaults;
};

struct UpdateAnswer {
    ServerFacts& facts;

    void operator()(const AppUpdateCheckResult::UpToDate& result) const {
        facts.answer = u"%1 is its newest version, and this is %2."_s.arg(result.remote, result.local);
    }

    void operator()(const AppUpdateCheckResult::Available& result) const {
        facts.answer = u"version %1 is there, and this is %2."_s.arg(result.release.version.trimmed(), result.local);
        facts.hasNews = true;
    }

    void operator()(const AppUpdateCheckResult::SkippedVersion& result) const {
        facts.answer = u"version %1 is there, which you have chosen to skip."_s.arg(result.release.version.trimmed());
    }

    void operator()(const AppUpdateCheckResult::Offline& result) const { facts.error = result.reason; }

    void operator()(const AppUpdateCheckResult::Failed& result) const { facts.error = result.message; }
};

} // namespace

Places Places::ofThisMachine(const std::optional<QString>& askedLogsDir) {
    return {askedLogsDir, AppConfig().logsDir, QDir::homePath(), processEnvironment()};
}

LogsFacts gatherLogs(const Places& places, const QDateTime& now) {
    LogsFacts facts;
    facts.asked = places.askedLogsDir;
    facts.folder = logsDirOf(places);
    if (!facts.folder) {
        return facts;
    }
    if (!facts.asked) {
        facts.others = gameLogsDirs(places.standardLogsDir, places.home, places.environment);
        facts.others.removeAll(*facts.folder);
    }
    const auto newest = newestSession(*facts.folder);
    if (!newest) {
        facts.obstacle = newest.error();
    } else if (const auto& session = *newest) {
        const QDateTime begun = beginningOf(*session);
        facts.session = SessionFact{QFileInfo(*session).fileName(),
                                    begun.isValid() && begun <= now ? std::optional(ageAt(begun, now)) : std::nullopt,
                                    QFileInfo(*session).isDir(), gatherLogFile(*session, u"Arena.log"_s, now),
                                    gatherLogFile(*session, u"LoadingScreen.log"_s, now)};
    }
    return facts;
}

LogConfigFacts gatherLogConfig(const Places& places, Fix fix) {
    // One that was named need not be there: its game's file is meant, and no other's.
    const auto logsDir = places.askedLogsDir ? places.askedLogsDir : logsDirOf(places);
    LogConfigFacts facts;
    facts.path = logConfigPath(logsDir, places.home, places.environment);
    if (!facts.path) {
        return facts;
    }
    if (fix == Fix::yes) {
        const auto fixed = fixLogConfig(*facts.path);
        if (!fixed) {
            facts.error = fixed.error();
            return facts;
        }
        facts.fixed = !fixed->changes.isEmpty();
        facts.changes = fixed->changes;
        facts.backup = fixed->backup;
    }
    const auto file = readLogConfig(*facts.path);
    if (!file) {
        facts.error = file.error();
        return facts;
    }
    facts.isThere = file->text.has_value();
    const auto merged = mergeLogConfig(file->text.value_or(QByteArray()));
    if (!merged) {
        facts.error = notPlainText(file->path);
        return facts;
    }
    facts.lacks = merged->changes;
    if (!facts.lacks.isEmpty()) {
        facts.error = file->toWriting;
    }
    facts.newerThanSession = facts.isThere && logsDir && missedBySession(*logsDir, QFileInfo(*facts.path));
    return facts;
}

WindowFacts gatherWindow(WindowServer& windows, const QString& ownerHint) {
    QElapsedTimer timer;
    timer.start();
    const auto game = WindowCapture::captureGame(windows, ownerHint);
    const auto took = elapsed(timer);
    if (game) {
        return {WindowFacts::Picture{game->window.owner, game->window.title, game->image.size(), took,
                                     isPlain(game->image)}};
    }
    const CapturePermission permission = windows.permission();
    const QString why = explanation(game.error(), permission);
    if (game.error().error == WindowCaptureError::noWindow) {
        const bool canSeeOthers = !game.error().cause && permission == CapturePermission::granted;
        return {WindowFacts::None{why, canSeeOthers}};
    }
    return {WindowFacts::Failed{why}};
}

ReaderFacts gatherReader(const ApplicationFiles& files) {
    ReaderFacts facts;
    const auto reader = TextReader::create(files);
    if (!reader) {
        facts.error = reader.error().reason;
        return facts;
    }
    facts.latin = tested(**reader, Script::latin);
    // One that finds its lines itself needs our data for Chinese; another brings its own.
    if ((*reader)->scalesLinesItself()) {
        if (const auto model = ChineseLineReader::loadModel(files); !model) {
            facts.chineseError = model.error();
            return facts;
        }
    }
    facts.chinese = tested(**reader, Script::chinese);
    return facts;
}

DataAndNames gatherData(const ApplicationFiles& files, NameLengths lengths, const QDateTime& now) {
    DataAndNames facts;
    facts.data.configurationFolder = files.configurationFolder();
    WinrateData data = WinrateData::read(files);
    const QString file = data.cards ? data.cardsSource : data.cards.error().path;
    facts.data.cardFile = file;
    facts.data.isUsersOwn = file.startsWith(files.configurationFolder() + u'/');
    if (!data.cards) {
        facts.data.error = describe(data.cards.error());
        return facts;
    }
    facts.data.remark = std::exchange(data.remark, QString()); // told here, so not logged too
    facts.data.classFile = data.classesSource;
    facts.data.areClassesSample = data.classes && data.classes->isSample;
    const auto fetched = timeOfFetch(data.cards->fetchedAt);
    facts.data.isAgeOfFile = !fetched;
    facts.data.age = ageAt(fetched.value_or(QFileInfo(file).lastModified()), now);
    WinrateStore store(files);
    const auto adopted = store.adopt(data);
    static_cast<void>(adopted); // there are cards
    facts.data.cards = store.byId().size();
    facts.data.classes = store.classesByKey().size();
    facts.data.isSample = store.holdsSampleData();
    facts.names = gatherNames(store, lengths);
    return facts;
}

NamesFacts gatherNames(const WinrateStore& store, NameLengths lengths) {
    NamesFacts facts;
    const CardRecognizer recognizer(store, lengths);
    const auto look = [&](const QString& name, const QRectF& band, const auto& match, const auto& isRight) {
        ++facts.names;
        ReadText text;
        text.tokens.push_back({name, 1, band.center().x(), band.center().y(), 0, 0});
        const std::vector<SlotMatch> matches = (recognizer.*match)(text);
        const bool found =
            std::ranges::any_of(matches, [&](const SlotMatch& each) { return each.cardId && isRight(*each.cardId); });
        if (!found && !facts.unmatchable.contains(name)) {
            facts.unmatchable.append(name);
        }
    };
    using Recognize = std::vector<SlotMatch> (CardRecognizer::*)(const ReadText&) const;
    constexpr Recognize cards = &CardRecognizer::recognizeCards;
    constexpr Recognize heroes = &CardRecognizer::recognizeHeroes;
    QSet<std::pair<QString, QString>> bearers; // a name may be that of several cards, and any of them will do
    for (const CardName& name : store.names()) {
        bearers.insert({name.norm, name.cardId});
    }
    for (const CardName& name : store.names()) {
        look(name.original, CardRecognizer::cardBand(), cards,
             [&](const QString& id) { return bearers.contains({name.norm, id}); });
    }
    for (const auto& [key, row] : store.classesByKey()) {
        QStringList names{row.nameZh, row.displayName(AppLanguage::en)};
        for (const QString& hero : row.heroNames.value_or(std::vector<QString>())) {
            names.append(hero);
        }
        names.removeAll(QString());
        names.removeDuplicates();
        for (const QString& name : std::as_const(names)) {
            look(name, CardRecognizer::heroBand(), heroes, [&](const QString& id) { return id == key; });
        }
    }
    if (lengths == NameLengths::limited && !facts.unmatchable.isEmpty()) {
        const NamesFacts usual = gatherNames(store, NameLengths::limitedUnlessExact);
        facts.strictnessCosts = usual.unmatchable.size() < facts.unmatchable.size();
    }
    return facts;
}

std::optional<QDateTime> timeOfFetch(const QString& text) {
    for (const Qt::DateFormat format : {Qt::ISODate, Qt::RFC2822Date}) {
        if (QDateTime time = QDateTime::fromString(text.trimmed(), format); time.isValid()) {
            return time;
        }
    }
    return std::nullopt;
}

ServerFacts gatherConfigServer(const QString& address, bool offline, HttpClient& http, const ApplicationFiles& files) {
    ServerFacts facts = unasked(ServerFacts::Kind::config, address, offline);
    if (facts.address.isEmpty() || offline) {
        return facts;
    }
    QElapsedTimer timer;
    timer.start();
    const auto fetched = fetchManifest(http, configFolderURL(address), configServerPatience);
    facts.took = elapsed(timer);
    if (!fetched) {
        facts.error = fetched.error().localizedDescription();
        return facts;
    }
    const QString& hash = fetched->manifest.hash;
    const LocalConfig config(files);
    facts.hasNews = config.localHash() != hash || !config.hasUsableLocalConfig();
    facts.answer = facts.hasNews ? u"it offers the data files %1…, which the next sync installs."_s.arg(shortHash(hash))
                                 : u"the data files that it offers (%1…) are installed."_s.arg(shortHash(hash));
    return facts;
}

ServerFacts gatherUpdateServer(const std::optional<QString>& asked, bool offline, const UserDefaults& defaults) {
    ServerFacts facts = unasked(ServerFacts::Kind::update, updateServer(asked), offline);
    if (facts.address.isEmpty() || offline) {
        return facts;
    }
    ReadOnlyDefaults readOnly(defaults);
    const UpdateClient client(asked, readOnly);
    QElapsedTimer timer;
    timer.start();
    const AppUpdateCheckResult result = client.checker().checkNow();
    facts.took = elapsed(timer);
    std::visit(UpdateAnswer{facts}, result.outcome);
    return facts;
}

FoldersFacts gatherFolders(const ApplicationFiles& files, const UserDefaults& defaults) {
    std::vector<std::pair<QString, QString>> places{{u"data files"_s, files.configurationFolder()}};
    if (const QString choices = defaults.file(); !choices.isEmpty()) {
        // It is replaced, not written into.
        places.emplace_back(u"your choices"_s, QFileInfo(choices).path());
    }
    const QString session = existingPrivateRuntimeFolder(qEnvironmentVariable("XDG_RUNTIME_DIR"), QDir::tempPath());
    if (!session.isEmpty()) {
        places.emplace_back(u"lock and socket"_s, session);
    }
    places.emplace_back(u"downloads while they are unpacked"_s, QDir::tempPath());
    FoldersFacts facts;
    for (const auto& [what, path] : places) {
        const bool isTaken = FileTree::exists(path) && !QFileInfo(path).isDir(); // a link to nowhere takes it too
        facts.folders.push_back({what, path, isTaken ? u"it is no folder"_s : FileTree::obstacleTo(path)});
    }
    return facts;
}

} // namespace pelloran::doctor
