#include "app/doctor/Judgement.h"

#include "app/doctor/Wording.h"

#include <QFileInfo>
#include <QUrl>

using namespace Qt::StringLiterals;

namespace pelloran::doctor {

namespace checks {

const QString logs = u"log folder"_s;
const QString logConfig = u"log.config"_s;
const QString window = u"game's window"_s;
const QString reader = u"text reader"_s;
const QString data = u"data files"_s;
const QString names = u"names"_s;
const QString desktop = u"display"_s;
const QString configServer = u"configuration server"_s;
const QString updateServer = u"update server"_s;
const QString instance = u"single instance"_s;
const QString folders = u"folders"_s;

} // namespace checks

namespace {

using State = Finding::State;

const QString fonts = u"fonts"_s;
const QString compositor = u"compositor"_s;
const QString tray = u"status area"_s;

// Figures of seven days, fetched every day, become stale within weeks.
constexpr std::chrono::hours oldData{14 * 24};

QString folderOf(const QString& file) {
    return QFileInfo(file).path();
}

// In the words of Qt, such as "SSL handshake failed" and "TLS initialization failed".
bool blamesSecurity(const QString& reason) {
    return reason.contains(u"SSL"_s) || reason.contains(u"TLS"_s);
}

bool isOnThisMachine(const QString& host) {
    return host == u"localhost"_s || host == u"::1"_s || host.startsWith(u"127."_s);
}

} // namespace

Finding judge(const ReaderFacts& facts) {
    if (!facts.error.isEmpty()) {
        return {checks::reader, State::problem, u"No text can be read."_s, u"Every offer stays \"Unrecognized\"."_s,
                sentence(facts.error)};
    }
    const auto outcome = [](const ReaderFacts::Test& test) {
        return u"\"%1\" was read as \"%2\" in %3 ms"_s.arg(test.expected, test.read,
                                                           QString::number(test.took.count()));
    };
    if (!facts.latin.isPassed()) {
        return {checks::reader, State::problem, u"The test line %1."_s.arg(outcome(facts.latin)),
                u"Names will be read wrong or not at all."_s,
                u"Install the data for reading Latin letters anew (Debian: tesseract-ocr-eng)."_s};
    }
    const QString inChinese = u"In a Chinese client every offer stays \"Unrecognized\"."_s;
    const QString again = u"Install Pelloran anew."_s;
    if (!facts.chineseError.isEmpty()) {
        return {checks::reader, State::note,
                u"The test line %1. There is no data for Chinese: %2."_s.arg(outcome(facts.latin), facts.chineseError),
                inChinese, again};
    }
    const QString both = u"The test lines: %1, %2."_s.arg(outcome(facts.latin), outcome(facts.chinese));
    return facts.chinese.isPassed() ? Finding{checks::reader,
                                              State::ok,
                                              u"Data for Latin letters and for Chinese is there. "_s + both,
                                              {},
                                              {}}
                                    : Finding{checks::reader, State::note, both, inChinese, again};
}

Finding judge(const DataFacts& facts) {
    if (!facts.error.isEmpty()) {
        return {checks::data, State::problem, sentence(facts.error), u"Pelloran does not start without figures."_s,
                facts.isUsersOwn
                    ? u"Mend that file or remove it: the figures that came with the program are used then."_s
                    : u"Install Pelloran anew, or put data files into %1."_s.arg(facts.configurationFolder)};
    }
    const bool areApart = facts.classes > 0 && folderOf(facts.classFile) != folderOf(facts.cardFile);
    const bool areMixed = areApart && facts.areClassesSample && !facts.isSample;
    const QString what = u"%1, %2 %3 ago: %4 cards, %5, %6 classes%7."_s.arg(
        facts.cardFile, facts.isAgeOfFile ? u"written"_s : u"fetched"_s, durationText(facts.age),
        QString::number(facts.cards), facts.isSample ? u"invented samples"_s : u"real figures"_s,
        QString::number(facts.classes),
        areApart ? u" (%1%2)"_s.arg(facts.classFile, areMixed ? u", invented samples"_s : QString()) : QString());
    const QString noHeroes = u"The three heroes are shown without figures."_s;
    if (!facts.remark.isEmpty()) {
        return {checks::data, State::note, what + u' ' + sentence(facts.remark), noHeroes,
                u"Mend or remove that file."_s};
    }
    if (facts.classes == 0) {
        return {checks::data, State::note, what, noHeroes,
                u"Put a class_winrates.json into %1."_s.arg(facts.configurationFolder)};
    }
    if (facts.isSample) {
        return {checks::data, State::note, what, u"They are for a look at the program and say nothing of any card."_s,
                u"Put real files into %1, or name a configuration server."_s.arg(facts.configurationFolder)};
    }
    if (areMixed) {
        return {checks::data, State::note, what, u"What is shown of the three heroes says nothing of them."_s,
                u"Put a real class_winrates.json into %1."_s.arg(folderOf(facts.cardFile))};
    }
    if (facts.age > oldData) {
        return {checks::data, State::note, what, u"Figures that old may not fit the cards that are offered now."_s,
                u"See the configuration server, or put newer files into %1."_s.arg(facts.configurationFolder)};
    }
    return {checks::data, State::ok, what, {}, {}};
}

Finding judge(const NamesFacts& facts) {
    if (facts.names == 0) {
        return {checks::names, State::note, u"There are none to look at."_s, {}, u"See the data files."_s};
    }
    if (facts.unmatchable.isEmpty()) {
        return {checks::names, State::ok, u"Each of %1 can be matched."_s.arg(facts.names), {}, {}};
    }
    return {checks::names, State::note,
            u"%1 of %2 can never be matched: %3."_s.arg(facts.unmatchable.size())
                .arg(facts.names)
                .arg(shortList(facts.unmatchable)),
            u"Where one of these is offered, its tile stays \"Unrecognized\"."_s,
            facts.strictnessCosts
                ? u"Leave --strict-lengths away: longer names count then, where they are read exactly."_s
                : u"They have too few letters, or name several classes: where that is wrong, mend the data."_s};
}

Finding judge(const ServerFacts& facts) {
    const bool isConfig = facts.kind == ServerFacts::Kind::config;
    const QString check = isConfig ? checks::configServer : checks::updateServer;
    if (facts.address.isEmpty()) {
        return {check, State::note, u"None is set."_s,
                isConfig ? u"The data files stay as they are."_s : u"Pelloran does not hear of new versions."_s,
                u"Whoever runs one tells its address, for the option %1."_s.arg(isConfig ? u"--config-server"_s
                                                                                         : u"--update-server"_s)};
    }
    if (facts.offline) {
        return {check, State::note, u"%1 was not asked (--offline)."_s.arg(facts.address), {}, {}};
    }
    const QString meaning = isConfig ? u"The data files stay as they are until it answers again."_s
                                     : u"Pelloran does not hear of new versions until it answers again."_s;
    const QUrl url(facts.address);
    const bool isSecure = url.scheme() == u"https"_s;
    if (!facts.error.isEmpty()) {
        const QString what = u"%1: %2"_s.arg(facts.address, sentence(facts.error));
        if (isSecure && facts.error.contains(u"certificate"_s, Qt::CaseInsensitive)) { // in OpenSSL's words
            return {check, State::problem, what,
                    u"Its certificate is not trusted, so nothing is taken from it. "_s + meaning,
                    u"Look whether this machine's clock is right and the package ca-certificates is installed; else it "
                    "is for whoever runs the server to mend."_s};
        }
        if (isSecure && blamesSecurity(facts.error)) {
            return {check, State::problem, what, u"No secure connection comes about. "_s + meaning,
                    u"Look whether the address is right, port and https included; else it is for whoever runs the "
                    "server."_s};
        }
        return {
            check, State::problem, what, meaning,
            u"Look whether this machine is online and the address is right; else it is for whoever runs the server."_s};
    }
    const QString what =
        u"%1 answered in %2 ms%3: %4"_s.arg(facts.address, QString::number(facts.took.count()),
                                            isSecure ? u", its certificate is trusted"_s : QString(), facts.answer);
    if (facts.hasNews && !isConfig) {
        return {check, State::note, what, {}, u"\"Check App Update\" (检查应用更新) in Pelloran's menu offers it."_s};
    }
    if (url.scheme() == u"http"_s && !isOnThisMachine(url.host())) {
        return {check, State::note, what,
                u"Nothing proves that the answer is that server's: http has no certificate."_s,
                u"Use https where the server has it."_s};
    }
    return {check, State::ok, what, {}, {}};
}

Finding judge(const InstanceFacts& facts) {
    if (!facts.process) {
        return {checks::instance, State::ok, u"Pelloran does not run."_s, {}, {}};
    }
    if (!facts.answers) {
        return {
            checks::instance, State::problem, u"Pelloran runs as process %1 and does not answer."_s.arg(*facts.process),
            u"Another start does nothing."_s, u"End it: kill %1, and where it stays: kill -9 %1"_s.arg(*facts.process)};
    }
    return {checks::instance,
            State::ok,
            u"Pelloran runs as process %1 and answers."_s.arg(*facts.process),
            u"Another start only brings its panel forward."_s,
            {}};
}

Finding judge(const FoldersFacts& facts) {
    QStringList refused;
    QStringList purposes;
    for (const FolderFact& folder : facts.folders) {
        if (folder.obstacle.isEmpty()) {
            purposes.append(u"%1 (%2)"_s.arg(folder.path, folder.what));
        } else {
            refused.append(u"%1 (%2): %3"_s.arg(folder.path, folder.what, folder.obstacle));
        }
    }
    if (!refused.isEmpty()) {
        return {checks::folders, State::problem, u"Cannot be written: %1."_s.arg(refused.join(u"; "_s)),
                u"What belongs there is lost."_s,
                u"Give yourself the right to write there, or move away what lies in the folder's place."_s};
    }
    return {checks::folders, State::ok, u"Can be written: %1."_s.arg(purposes.join(u", "_s)), {}, {}};
}

std::vector<Finding> judge(const DesktopFacts& facts) {
    if (!facts.noDisplay.isEmpty()) {
        std::vector<Finding> findings{
            {checks::desktop, State::problem, sentence(facts.noDisplay),
             u"Neither the panel nor the game's window can be had; the checks that need a display are left out."_s,
             u"Start it from the desktop that the game runs on. \"pelloran --no-panel\" needs none."_s}};
        for (const QString& check : {fonts, compositor, tray}) {
            findings.push_back({check, State::note, u"Not looked at, without a display."_s, {}, {}});
        }
        return findings;
    }
    std::vector<Finding> findings;
    const QString where = facts.display.isEmpty() ? QString() : facts.display + u", "_s;
    findings.push_back({checks::desktop,
                        State::ok,
                        u"%1%2, %3."_s.arg(where, facts.screens.join(u" and "_s), u"by way of "_s + facts.platform),
                        {},
                        {}});
    findings.push_back(facts.hasChineseFont ? Finding{fonts, State::ok, u"There is one that covers Chinese."_s, {}, {}}
                                            : Finding{fonts, State::note, u"None covers Chinese."_s,
                                                      u"Chinese names and texts show as boxes."_s,
                                                      u"Install the package fonts-noto-cjk (Noto Sans CJK SC)."_s});
    findings.push_back(
        facts.composited
            ? Finding{compositor, State::ok, u"One runs: the panel is translucent."_s, {}, {}}
            : Finding{compositor, State::note, u"None runs."_s, u"The panel is opaque and has cut corners."_s,
                      u"Nothing has to be done; the desktop's settings may have effects to switch on, or "
                      "start a compositor such as picom."_s});
    findings.push_back(facts.hasTray
                           ? Finding{tray, State::ok, u"There is one, for Pelloran's icon."_s, {}, {}}
                           : Finding{tray, State::note, u"This desktop has none."_s,
                                     u"Pelloran has no icon; its menu opens on a right click of the panel, and "
                                     "starting Pelloran again shows one that was closed."_s,
                                     u"Nothing has to be done; on GNOME an extension such as AppIndicator "
                                     "brings one."_s});
    return findings;
}

Finding noDesktop(const QString& said) {
    return {checks::desktop, State::problem,
            said.isEmpty() ? u"Qt cannot show anything here."_s
                           : u"Qt cannot show anything here: %1"_s.arg(sentence(said)),
            u"The panel cannot be shown."_s,
            u"Leave the variable QT_QPA_PLATFORM unset, and look whether Qt's parts for this desktop are installed."_s};
}

Finding unfinished(const QString& check, std::chrono::seconds waited) {
    return {check, State::problem, u"This check was not done after %1."_s.arg(durationText(waited)),
            u"Something that it asks does not answer: a disk, the desktop or a server."_s,
            u"Try again; the other checks may tell what it is."_s};
}

Finding broken(const QString& check, const QString& why) {
    return {check,
            State::problem,
            u"This check failed: %1"_s.arg(sentence(why)),
            {},
            u"The other checks are not touched by that."_s};
}

} // namespace pelloran::doctor
