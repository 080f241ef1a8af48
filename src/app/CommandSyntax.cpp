#include "app/CommandSyntax.h"

#include <QCommandLineParser>
#include <QRegularExpression>

#include <algorithm>

namespace pelloran {

namespace {

const QString logsDirOption = QStringLiteral("logs-dir");
const QString windowOwnerOption = QStringLiteral("window-owner");
const QString languageOption = QStringLiteral("language");
const QString snapshotsOption = QStringLiteral("snapshots");
const QString noPanelOption = QStringLiteral("no-panel");
const QString reduceMotionOption = QStringLiteral("reduce-motion");
const QString resetPanelOption = QStringLiteral("reset-panel");
const QString configServerOption = QStringLiteral("config-server");
const QString updateServerOption = QStringLiteral("update-server");
const QString recordOption = QStringLiteral("record");
const QString recordSizeOption = QStringLiteral("record-size");
const QString phaseOption = QStringLiteral("phase");
const QString ticksOption = QStringLiteral("ticks");
const QString strictLengthsOption = QStringLiteral("strict-lengths");
const QString jsonOption = QStringLiteral("json");
const QString textsOption = QStringLiteral("texts");
const QString fixOption = QStringLiteral("fix");
const QString offlineOption = QStringLiteral("offline");
const QString desktopOption = QStringLiteral("desktop");
const QString cardsOption = QStringLiteral("cards");
const QString namesOption = QStringLiteral("names");
const QString classesOption = QStringLiteral("classes");
const QString nameOption = QStringLiteral("name");
const QString versionOption = QStringLiteral("version");
const QString buildOption = QStringLiteral("build");
const QString minMacosOption = QStringLiteral("min-macos");
const QString archOption = QStringLiteral("arch");
const QString dmgOption = QStringLiteral("dmg");
const QString zipOption = QStringLiteral("zip");
const QString baseURLOption = QStringLiteral("base-url");
const QString notesOption = QStringLiteral("notes");
const QString notesZhOption = QStringLiteral("notes-zh");
const QString notesEnOption = QStringLiteral("notes-en");
const QString publishedAtOption = QStringLiteral("published-at");
const QString forceOption = QStringLiteral("force");

constexpr qint64 mostRecordMegabytes = 100'000;

// Also of an option that the command does not have, of which the parser's isSet() would complain.
bool isGiven(const QCommandLineParser& parsed, const QString& option) {
    return parsed.optionNames().contains(option);
}

std::optional<QString> optionalValue(const QCommandLineParser& parsed, const QString& option) {
    return isGiven(parsed, option) ? std::optional(parsed.value(option)) : std::nullopt;
}

std::expected<Command, QString> noArguments(const QCommandLineParser& parsed, Command command) {
    if (!parsed.positionalArguments().isEmpty()) {
        return std::unexpected(
            QStringLiteral("unknown command or argument \"%1\"").arg(parsed.positionalArguments().first()));
    }
    return command;
}

std::expected<RunLoop, QString> parsedRunLoop(const QCommandLineParser& parsed) {
    RunLoop run{
        .logsDir = optionalValue(parsed, logsDirOption),
        .windowOwner = optionalValue(parsed, windowOwnerOption),
        .language = std::nullopt,
        .panel = !isGiven(parsed, noPanelOption),
        .snapshots =
            isGiven(parsed, snapshotsOption) || isGiven(parsed, noPanelOption), // without a panel they are all there is
        .reduceMotion = isGiven(parsed, reduceMotionOption),
        .resetPanel = isGiven(parsed, resetPanelOption),
        .strictLengths = isGiven(parsed, strictLengthsOption),
        .configServer = optionalValue(parsed, configServerOption),
        .updateServer = optionalValue(parsed, updateServerOption),
        .record = optionalValue(parsed, recordOption),
    };
    if (run.resetPanel && !run.panel) {
        return std::unexpected(QStringLiteral("--reset-panel does not go with --no-panel"));
    }
    if (isGiven(parsed, recordSizeOption)) {
        bool isNumber = false;
        run.recordMegabytes = parsed.value(recordSizeOption).toLongLong(&isNumber);
        if (!isNumber || run.recordMegabytes < 1 || run.recordMegabytes > mostRecordMegabytes) {
            return std::unexpected(
                QStringLiteral("--record-size takes a whole number of megabytes, 1 to %1").arg(mostRecordMegabytes));
        }
    }
    if (isGiven(parsed, languageOption)) {
        run.language = AppLanguage::fromRawValue(parsed.value(languageOption));
        if (!run.language) {
            return std::unexpected(QStringLiteral("--language takes system, zh or en"));
        }
    }
    return run;
}

std::expected<Command, QString> buildRunLoop(const QCommandLineParser& parsed) {
    auto run = parsedRunLoop(parsed);
    if (!run) {
        return std::unexpected(run.error());
    }
    return noArguments(parsed, *std::move(run));
}

std::expected<Command, QString> buildRecord(const QCommandLineParser& parsed) {
    auto run = parsedRunLoop(parsed);
    if (!run) {
        return std::unexpected(run.error());
    }
    if (parsed.positionalArguments().size() != 1) {
        return std::unexpected(QStringLiteral("record needs the folder for the recording"));
    }
    run->record = parsed.positionalArguments().first();
    run->panel = false;
    run->snapshots = true;
    return *std::move(run);
}

std::expected<Command, QString> buildReplay(const QCommandLineParser& parsed) {
    if (parsed.positionalArguments().size() != 1) {
        return std::unexpected(QStringLiteral("replay needs the folder of a recording"));
    }
    return ReplayRecording{parsed.positionalArguments().first()};
}

std::expected<Command, QString> buildDraftState(const QCommandLineParser& parsed) {
    return noArguments(parsed, PrintDraftState{optionalValue(parsed, logsDirOption)});
}

std::expected<Command, QString> buildLogsDir(const QCommandLineParser& parsed) {
    return noArguments(parsed, PrintLogsDir{});
}

std::expected<Command, QString> buildRecognize(const QCommandLineParser& parsed) {
    RecognizeImages recognize{
        .phase = DraftPhase::cardPick,
        .ticks = parsed.isSet(ticksOption),
        .strictLengths = parsed.isSet(strictLengthsOption),
        .images = parsed.positionalArguments(),
    };
    const QString phase = parsed.value(phaseOption);
    if (phase == QLatin1StringView("heroPick")) {
        recognize.phase = DraftPhase::heroPick;
    } else if (phase != QLatin1StringView("cardPick")) {
        return std::unexpected(QStringLiteral("recognize needs --phase heroPick or --phase cardPick"));
    }
    if (recognize.images.isEmpty()) {
        return std::unexpected(QStringLiteral("recognize needs at least one image"));
    }
    return recognize;
}

std::expected<Command, QString> buildEvaluate(const QCommandLineParser& parsed) {
    if (parsed.positionalArguments().isEmpty()) {
        return std::unexpected(QStringLiteral("evaluate needs at least one folder of pictures with their truth"));
    }
    return EvaluateFolders{
        .ticks = parsed.isSet(ticksOption),
        .json = parsed.isSet(jsonOption),
        .texts = parsed.isSet(textsOption),
        .strictLengths = parsed.isSet(strictLengthsOption),
        .folders = parsed.positionalArguments(),
    };
}

std::expected<Command, QString> buildMatch(const QCommandLineParser& parsed) {
    if (parsed.positionalArguments().isEmpty()) {
        return std::unexpected(QStringLiteral("match needs at least one text"));
    }
    return MatchTexts{.classes = parsed.isSet(classesOption), .texts = parsed.positionalArguments()};
}

std::expected<Command, QString> buildSync(const QCommandLineParser& parsed) {
    return noArguments(parsed, SyncOnce{optionalValue(parsed, configServerOption)});
}

std::expected<Command, QString> buildCheckUpdate(const QCommandLineParser& parsed) {
    return noArguments(parsed, CheckUpdateOnce{optionalValue(parsed, updateServerOption)});
}

// "enUS.json", "zhCN=cards"
bool looksLikeList(const QString& argument) {
    static const QRegularExpression list(QStringLiteral("\\A[a-z]{2}[A-Z]{2}=|[.]json\\z"),
                                         QRegularExpression::CaseInsensitiveOption);
    return list.match(argument).hasMatch();
}

std::expected<Command, QString> buildPublish(const QCommandLineParser& parsed) {
    const QStringList arguments = parsed.positionalArguments();
    // A shell makes several files of one pattern, of which the option takes the first. The others are known for what
    // they are behind the folders alone; before these, one would be taken for a folder.
    const bool areLists = parsed.isSet(namesOption) && arguments.size() > 2;
    if (parsed.isSet(namesOption)) {
        for (const QString& folder : arguments.first(std::min(arguments.size(), qsizetype{2}))) {
            if (looksLikeList(folder)) {
                return std::unexpected(
                    QStringLiteral("--names takes one FILE, and %1 stands where a folder should: say --names before "
                                   "each FILE, or put the others behind SOURCE and TARGET")
                        .arg(folder));
            }
        }
    }
    if (arguments.size() != 2 && !areLists) {
        return std::unexpected(QStringLiteral("publish needs the folder of data files and the web server's"));
    }
    return PublishData{.source = arguments[0],
                       .target = arguments[1],
                       .cardTable = optionalValue(parsed, cardsOption),
                       .cardLists = parsed.values(namesOption) + arguments.sliced(2)};
}

std::expected<Command, QString> buildReleaseInfo(const QCommandLineParser& parsed) {
    if (!parsed.isSet(versionOption)) {
        return std::unexpected(QStringLiteral("release-info needs --version"));
    }
    std::optional<qint64> build;
    if (parsed.isSet(buildOption)) {
        bool isNumber = false;
        build = parsed.value(buildOption).toLongLong(&isNumber);
        if (!isNumber) {
            return std::unexpected(QStringLiteral("--build takes a whole number"));
        }
    }
    return noArguments(parsed, DescribeRelease{
                                   .parts = {.name = optionalValue(parsed, nameOption),
                                             .version = parsed.value(versionOption),
                                             .build = build,
                                             .minMacos = optionalValue(parsed, minMacosOption),
                                             .arch = parsed.isSet(archOption) ? std::optional(parsed.values(archOption))
                                                                              : std::nullopt,
                                             .dmgFile = optionalValue(parsed, dmgOption),
                                             .zipFile = optionalValue(parsed, zipOption),
                                             .baseURL = optionalValue(parsed, baseURLOption),
                                             .notesFile = optionalValue(parsed, notesOption),
                                             .notesZhFile = optionalValue(parsed, notesZhOption),
                                             .notesEnFile = optionalValue(parsed, notesEnOption),
                                             .publishedAt = optionalValue(parsed, publishedAtOption),
                                             .force = parsed.isSet(forceOption)},
                                   .updateServer = optionalValue(parsed, updateServerOption),
                               });
}

std::expected<Command, QString> buildDoctor(const QCommandLineParser& parsed) {
    if (parsed.isSet(desktopOption)) {
        const QStringList others = parsed.optionNames();
        if (std::ranges::any_of(others,
                                [](const QString& name) { return name != desktopOption && name != jsonOption; })) {
            return std::unexpected(QStringLiteral("--desktop goes with --json alone"));
        }
        return noArguments(parsed, ExamineDesktop{parsed.isSet(jsonOption)});
    }
    return noArguments(parsed, ExamineMachine{
                                   .logsDir = optionalValue(parsed, logsDirOption),
                                   .windowOwner = optionalValue(parsed, windowOwnerOption),
                                   .strictLengths = parsed.isSet(strictLengthsOption),
                                   .configServer = optionalValue(parsed, configServerOption),
                                   .updateServer = optionalValue(parsed, updateServerOption),
                                   .offline = parsed.isSet(offlineOption),
                                   .fix = parsed.isSet(fixOption),
                                   .json = parsed.isSet(jsonOption),
                               });
}

} // namespace

const std::vector<CommandSyntax>& commandSyntaxes() {
    static const CommandOption configServer{
        configServerOption, QStringLiteral("URL"),
        QStringLiteral("where data files come from, in place of the built-in address")};
    static const CommandOption updateServer{
        updateServerOption, QStringLiteral("URL"),
        QStringLiteral("where new versions are told of, in place of the built-in address")};
    static const CommandOption logsDir{logsDirOption, QStringLiteral("DIR"),
                                       QStringLiteral("the game's log folder, in place of the usual places")};
    static const CommandOption strictLengths{
        strictLengthsOption, {}, QStringLiteral("leave out lines that are too long for a name, though they equal one")};
    static const CommandOption windowOwner{windowOwnerOption, QStringLiteral("NAME"),
                                           QStringLiteral("owner or title of the game's window")};
    static const CommandOption language{languageOption, QStringLiteral("LANGUAGE"),
                                        QStringLiteral("system, zh or en, for this run")};
    static const CommandOption recordSize{
        recordSizeOption, QStringLiteral("MEGABYTES"),
        QStringLiteral("what a recording may take up, 50 if not said; the oldest goes")};
    static const std::vector<CommandSyntax> all{
        {
            {},
            {},
            QStringLiteral("Follows an Arena draft of Hearthstone and shows the figures of what is offered."),
            {
                logsDir,
                windowOwner,
                language,
                {snapshotsOption, {}, QStringLiteral("print every published snapshot as a JSON line")},
                {noPanelOption, {}, QStringLiteral("show nothing, need no display; prints the snapshots")},
                {reduceMotionOption, {}, QStringLiteral("nothing in the panel moves, whatever the desktop says")},
                {resetPanelOption, {}, QStringLiteral("forget where the panel was put")},
                strictLengths,
                configServer,
                updateServer,
                {recordOption, QStringLiteral("FOLDER"),
                 QStringLiteral("keep there what is seen of the draft, for a report of a mistake")},
                recordSize,
            },
            buildRunLoop,
        },
        {
            QStringLiteral("record"),
            QStringLiteral("FOLDER"),
            QStringLiteral("Follows a draft without a panel and keeps in FOLDER what is seen of it."),
            {logsDir, windowOwner, language, strictLengths, recordSize},
            buildRecord,
        },
        {
            QStringLiteral("replay"),
            QStringLiteral("FOLDER"),
            QStringLiteral("Goes through a recording again and prints what is otherwise than it was."),
            {},
            buildReplay,
        },
        {
            QStringLiteral("draft-state"),
            {},
            QStringLiteral("Reads the game's logs once and prints the state of the draft."),
            {logsDir},
            buildDraftState,
        },
        {
            QStringLiteral("logs-dir"),
            {},
            QStringLiteral("Prints the game's log folder; fails when none is found."),
            {},
            buildLogsDir,
        },
        {
            QStringLiteral("recognize"),
            QStringLiteral("IMAGE..."),
            QStringLiteral("Reads pictures of the game's window and prints what is offered on each."),
            {
                {phaseOption, QStringLiteral("PHASE"), QStringLiteral("heroPick or cardPick")},
                {ticksOption, {}, QStringLiteral("the images are successive ticks of one draft, not independent ones")},
                strictLengths,
            },
            buildRecognize,
        },
        {
            QStringLiteral("evaluate"),
            QStringLiteral("FOLDER..."),
            QStringLiteral(
                "Recognises pictures whose truth lies beside them, with the data in use, and prints how it went."),
            {
                {ticksOption, {}, QStringLiteral("as for recognize, and each picture is looked at three times")},
                {jsonOption, {}, QStringLiteral("print a JSON line for each picture and one for all")},
                {textsOption, {}, QStringLiteral("also read each text that a truth file has in a box, by itself")},
                strictLengths,
            },
            buildEvaluate,
        },
        {
            QStringLiteral("match"),
            QStringLiteral("TEXT..."),
            QStringLiteral(
                "Prints the card that each text names best, by the matching rules alone: too long a text names none."),
            {
                {classesOption, {}, QStringLiteral("look among hero classes instead of cards")},
                {strictLengthsOption, {}, QStringLiteral("changes nothing: lengths are always limited here")},
            },
            buildMatch,
        },
        {
            QStringLiteral("sync"),
            {},
            QStringLiteral("Brings the data files up to date once and prints how it went."),
            {configServer},
            buildSync,
        },
        {
            QStringLiteral("check-update"),
            {},
            QStringLiteral("Asks once for a newer version and prints the answer."),
            {updateServer},
            buildCheckUpdate,
        },
        {
            QStringLiteral("doctor"),
            {},
            QStringLiteral(
                "Looks at all that Pelloran needs and tells, in a line each, what is well and what to mend."),
            {
                {fixOption, {}, QStringLiteral("complete the game's log.config, and keep a copy of it beside it")},
                {jsonOption, {}, QStringLiteral("print a JSON line for each check")},
                {offlineOption, {}, QStringLiteral("ask no server")},
                {desktopOption, {}, QStringLiteral("only display, fonts, compositor, status area, single instance")},
                logsDir,
                windowOwner,
                strictLengths,
                configServer,
                updateServer,
            },
            buildDoctor,
        },
        {
            QStringLiteral("publish"),
            QStringLiteral("SOURCE TARGET"),
            QStringLiteral("Checks a folder of data files and makes TARGET serve it to clients."),
            {
                {cardsOption, QStringLiteral("FILE.csv"),
                 QStringLiteral("a table of cards that is made into the card file first")},
                {namesOption, QStringLiteral("FILE"),
                 QStringLiteral("a public list of cards in one language, from which names and the like are filled in; "
                                "may be given for each language")},
            },
            buildPublish,
        },
        {
            QStringLiteral("release-info"),
            {},
            QStringLiteral("Checks what is said of a release and prints it as the update server's latest.json."),
            {
                {versionOption, QStringLiteral("VERSION"), QStringLiteral("the release's, such as 1.4.2")},
                {buildOption, QStringLiteral("NUMBER"), QStringLiteral("its build number")},
                {dmgOption, QStringLiteral("FILE"), QStringLiteral("its disk image, served under its file name")},
                {zipOption, QStringLiteral("FILE"), QStringLiteral("its archive, likewise")},
                {baseURLOption, QStringLiteral("URL"), QStringLiteral("where they lie, if not beside latest.json")},
                {notesOption, QStringLiteral("FILE"), QStringLiteral("notes in no particular language")},
                {notesZhOption, QStringLiteral("FILE"), QStringLiteral("notes in Chinese")},
                {notesEnOption, QStringLiteral("FILE"), QStringLiteral("notes in English")},
                {minMacosOption, QStringLiteral("VERSION"), QStringLiteral("the oldest macOS it runs on")},
                {archOption, QStringLiteral("NAME"), QStringLiteral("arm64 or x86_64; may be given twice")},
                {nameOption, QStringLiteral("TEXT"), QStringLiteral("the product's name")},
                {publishedAtOption, QStringLiteral("TEXT"), QStringLiteral("when it was published")},
                {forceOption, {}, QStringLiteral("clients may not skip it")},
                updateServer,
            },
            buildReleaseInfo,
        },
    };
    return all;
}

} // namespace pelloran
