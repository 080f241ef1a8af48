#include "app/doctor/Judgement.h"
#include "app/doctor/Wording.h"

#include <algorithm>

using namespace Qt::StringLiterals;

// Of what is the game's: its logs, the file that has it write them, its window.
namespace pelloran::doctor {

namespace {

using State = Finding::State;

// A game that runs writes more often.
constexpr std::chrono::hours oldSession{24};

// The smallest window that was measured.
constexpr QSize leastWindow{640, 480};

QString sizeText(qint64 bytes) {
    if (bytes < 10'000) {
        return u"%1 bytes"_s.arg(bytes);
    }
    return bytes < 10'000'000 ? u"%1 kB"_s.arg(bytes / 1000) : u"%1 MB"_s.arg(bytes / 1'000'000);
}

QString describe(const LogFileFact& file) {
    if (!file.isThere) {
        return u"no %1"_s.arg(file.name);
    }
    return u"%1 (%2, written %3 ago)"_s.arg(file.name, sizeText(file.size), durationText(file.age));
}

// A sentence without its subject and end.
QString whatIsWrong(LogFileError error, const QString& reason) {
    switch (error) {
    case LogFileError::unreadable:
        return reason.isEmpty() ? u"cannot be read"_s : u"cannot be read: "_s + reason;
    case LogFileError::tooLarge:
        return u"is larger than %1 MiB and is not read"_s.arg(largestLogFile / 1024 / 1024);
    case LogFileError::notText:
        return u"is not text in UTF-8 and is not used"_s;
    }
    Q_UNREACHABLE();
}

QString adviceFor(LogFileError error) {
    const QString restart = u"Restart the game: it begins new logs then."_s;
    return error == LogFileError::unreadable
               ? u"See to it that it is a file, and that you may read it and its folder. "_s + restart
               : restart;
}

QString adviceFor(LogConfigError::Kind kind) {
    using Kind = LogConfigError::Kind;
    const QString fix = u"then \"pelloran doctor --fix\" puts in what the game has to be told. Restart the game "
                        "after it."_s;
    const QString makeAnew = u"then \"pelloran doctor --fix\" makes a new one. Restart the game after it."_s;
    switch (kind) {
    case Kind::leadsNowhere:
        return u"Remove the link; "_s + makeAnew;
    case Kind::noFile:
    case Kind::tooLarge:
        return u"Move it out of the way; "_s + makeAnew;
    case Kind::unreadable:
        return u"Give yourself the right to read it (chmod u+r); "_s + fix;
    case Kind::notPlainText:
        return u"Open it in an editor and save it as UTF-8, or move it out of the way; "_s + fix;
    case Kind::isProtected:
        return u"Give yourself the right to write it (chmod u+w); "_s + fix;
    case Kind::unwritable:
        return u"Look whether that folder is yours and the disk has room; "_s + fix;
    }
    Q_UNREACHABLE();
}

Finding judgeSession(const QString& folder, const SessionFact& session) {
    if (!session.isFolder) {
        return {checks::logs, State::problem,
                u"%1/%2 is no folder, so there are no logs in it."_s.arg(folder, session.name),
                u"Pelloran takes what was changed last under such a name for the game's session."_s,
                u"Move it out of the folder Logs."_s};
    }
    const auto unusable = [&](const LogFileFact& file) {
        return u"%1/%2/%3 %4."_s.arg(folder, session.name, file.name, whatIsWrong(*file.error, file.reason));
    };
    const QString begun = session.age ? u", begun %1 ago"_s.arg(durationText(*session.age)) : QString();
    const QString files = u"%1, session %2%3: %4, %5."_s.arg(folder, session.name, begun, describe(session.arena),
                                                             describe(session.loadingScreen));
    if (session.arena.error) {
        return {checks::logs, State::problem, unusable(session.arena), u"Pelloran takes it that no draft runs."_s,
                adviceFor(*session.arena.error)};
    }
    if (!session.arena.isThere && !session.loadingScreen.isThere) {
        return {checks::logs, State::problem, files,
                u"The game was not told to write them when it started, so Pelloran cannot know of a draft."_s,
                u"See log.config, then restart the game."_s};
    }
    if (!session.arena.isThere) {
        return {checks::logs, State::note, files,
                u"Pelloran knows of a draft from Arena.log, which the game begins when the Arena is entered."_s,
                u"Enter the Arena; where the file does not appear then, see log.config and restart the game."_s};
    }
    if (session.loadingScreen.error) {
        return {checks::logs, State::note, unusable(session.loadingScreen),
                u"Pelloran follows drafts, but does not notice when you leave their screen."_s,
                adviceFor(*session.loadingScreen.error)};
    }
    if (!session.loadingScreen.isThere) {
        return {checks::logs, State::note, files,
                u"Pelloran follows drafts, but does not notice when you leave their screen."_s,
                u"See log.config, then restart the game."_s};
    }
    if (std::min(session.arena.age, session.loadingScreen.age) > oldSession) {
        return {checks::logs, State::note, files, u"The game has not written there for long."_s,
                u"Nothing, if it does not run. If it does, it writes elsewhere: name that folder with --logs-dir."_s};
    }
    return {checks::logs, State::ok, files, {}, {}};
}

struct JudgeWindow {
    Finding operator()(const WindowFacts::Picture& picture) const {
        const QString what = u"\"%1\"%2, %3x%4 pixels, found and captured in %5 ms."_s.arg(
            picture.title.isEmpty() ? picture.owner : picture.title,
            picture.title.isEmpty() || picture.owner.isEmpty() || picture.owner == picture.title
                ? QString()
                : u" of "_s + picture.owner,
            QString::number(picture.size.width()), QString::number(picture.size.height()),
            QString::number(picture.took.count()));
        if (picture.isPlain) {
            return {checks::window, State::note, what, u"Its picture is of one colour, so there is nothing to read."_s,
                    u"Look again when the game shows something. Where it stays so, have the game draw in a window "
                    "instead of full screen."_s};
        }
        if (picture.size.width() < leastWindow.width() || picture.size.height() < leastWindow.height()) {
            return {checks::window, State::note, what, u"Names on so small a window are not read surely."_s,
                    u"Make it larger: 640x480 at least, 700 pixels of height or more for Chinese."_s};
        }
        return {checks::window, State::ok, what, {}, {}};
    }

    Finding operator()(const WindowFacts::None& none) const {
        if (!none.canSeeOthers) {
            return {checks::window, State::problem, u"No window of another program can be seen."_s,
                    u"Pelloran cannot read what is offered."_s, sentence(none.explanation)};
        }
        return {checks::window, State::note, u"There is none."_s, u"Nothing is wrong while the game does not run."_s,
                sentence(none.explanation)};
    }

    Finding operator()(const WindowFacts::Failed& failed) const {
        return {checks::window, State::problem, u"It is there, but there is no picture of it."_s,
                u"Pelloran cannot read what is offered."_s, sentence(failed.explanation)};
    }
};

} // namespace

Finding judge(const LogsFacts& facts) {
    if (!facts.folder) {
        const QString meaning = u"Pelloran cannot know when a pick is on screen."_s;
        if (facts.asked) {
            return {checks::logs, State::problem, u"The folder %1 of --logs-dir is not there."_s.arg(*facts.asked),
                    meaning, u"Name the folder Logs inside of the game's own folder."_s};
        }
        return {checks::logs, State::problem, u"No log folder of the game was found in the usual places."_s, meaning,
                u"Start the game once, then Pelloran anew. If it is installed elsewhere, name its folder Logs with "
                "--logs-dir, or its Wine prefix with the variable WINEPREFIX."_s};
    }
    if (!facts.obstacle.isEmpty()) {
        return {checks::logs, State::problem, u"%1 cannot be listed: %2."_s.arg(*facts.folder, facts.obstacle),
                u"Pelloran cannot know when a pick is on screen."_s, u"Give yourself the right to read that folder."_s};
    }
    Finding finding =
        facts.session ? judgeSession(*facts.folder, *facts.session)
                      : Finding{checks::logs, State::problem, u"%1 holds no session of the game."_s.arg(*facts.folder),
                                u"The game has not run yet, or it writes its logs elsewhere."_s,
                                u"Start the game. If it runs, name its folder Logs with --logs-dir."_s};
    if (!facts.others.isEmpty()) {
        finding.what += u" Logs of the game are also in %1."_s.arg(shortList(facts.others));
        finding.advice = QStringList{finding.advice, u"To follow the game there, name that folder with --logs-dir."_s}
                             .join(u' ')
                             .trimmed();
    }
    return finding;
}

Finding judge(const LogConfigFacts& facts) {
    const QString silent = u"The game does not write what Pelloran reads."_s;
    if (!facts.path) {
        return {
            checks::logConfig, State::note,
            u"It is not known where it lies: no Wine prefix with the game was found, or the log folder is in none."_s,
            u"Whether the game is told to write its logs cannot be looked up."_s,
            u"Name the game's Wine prefix with the variable WINEPREFIX."_s};
    }
    if (facts.fixed) {
        const QString kept = facts.backup.isEmpty() ? QString() : u" What was there is in %1."_s.arg(facts.backup);
        return {checks::logConfig, State::note,
                u"%1 was put right: %2.%3"_s.arg(*facts.path, facts.changes.join(u", "_s), kept),
                u"The game reads it only when it starts."_s, u"Restart the game."_s};
    }
    if (facts.error) {
        return {checks::logConfig, State::problem, sentence(facts.error->description), silent,
                adviceFor(facts.error->kind)};
    }
    if (!facts.isThere) {
        return {checks::logConfig, State::problem, u"%1 is not there."_s.arg(*facts.path), silent,
                u"\"pelloran doctor --fix\" makes it; then restart the game."_s};
    }
    if (!facts.lacks.isEmpty()) {
        return {checks::logConfig, State::problem,
                u"%1 is to say otherwise: %2."_s.arg(*facts.path, facts.lacks.join(u", "_s)), silent,
                u"\"pelloran doctor --fix\" puts it right and keeps a copy; then restart the game."_s};
    }
    const QString complete = u"%1 has both sections."_s.arg(*facts.path);
    if (facts.newerThanSession) {
        return {checks::logConfig, State::note, complete,
                u"It was changed after the game had started, and the game reads it only then."_s,
                u"Restart the game if its logs are missing."_s};
    }
    return {checks::logConfig, State::ok, complete, {}, {}};
}

Finding judge(const WindowFacts& facts) {
    return std::visit(JudgeWindow(), facts.seen);
}

} // namespace pelloran::doctor
