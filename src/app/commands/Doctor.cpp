#include "app/commands/Commands.h"
#include "app/commands/Output.h"
#include "app/doctor/Bounded.h"
#include "app/doctor/Gather.h"
#include "app/doctor/Judgement.h"
#include "app/Json.h"
#include "app/ServerClients.h"
#include "base/Log.h"
#include "localisation/AppLanguage.h"
#include "model/DraftModel.h"
#include "platform/ApplicationFiles.h"
#include "platform/HttpClient.h"
#include "platform/UserDefaults.h"
#include "platform/WindowServer.h"

#include <QCoreApplication>
#include <QJsonDocument>
#include <QProcess>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <functional>
#include <future>
#include <vector>

namespace pelloran {

namespace {

using namespace std::chrono_literals;
using doctor::judge;
namespace checks = doctor::checks;

using Findings = std::vector<Finding>;

// What the checks may take: a second in all, their own limits up to some twenty, and many times that on a machine that
// is busy with a game.
constexpr auto patience = 45s;
constexpr auto desktopPatience = 40s; // of the process in which one of them is done

struct Check {
    QString name;
    std::future<Findings> result;
    std::chrono::steady_clock::time_point begun = std::chrono::steady_clock::now();
};

Check begin(const QString& name, std::function<Findings()> work) {
    return {name, beginApart(std::move(work))};
}

// True where it came to its end.
bool await(Check& check, Findings& findings) {
    if (check.result.wait_until(check.begun + patience) != std::future_status::ready) {
        findings = {doctor::unfinished(check.name, patience)};
        return false;
    }
    try {
        findings = check.result.get();
    } catch (const std::exception& error) {
        findings = {doctor::broken(check.name, QString::fromLocal8Bit(error.what()))};
    }
    return true;
}

// What is asked of Qt's part of the desktop is asked in a process of its own: it waits without a limit for some
// desktops, and ends the program on others.
Findings examineDesktop(const QString& program) {
    QProcess examination;
    examination.start(program, {QStringLiteral("doctor"), QStringLiteral("--desktop"), QStringLiteral("--json")});
    examination.closeWriteChannel();
    if (!examination.waitForFinished(int(std::chrono::milliseconds(desktopPatience).count()))) {
        const bool started = examination.error() != QProcess::FailedToStart;
        examination.kill();
        examination.waitForFinished(1000);
        return {started ? doctor::unfinished(checks::desktop, desktopPatience)
                        : doctor::broken(checks::desktop, examination.errorString())};
    }
    Findings findings;
    for (const QByteArray& line : examination.readAllStandardOutput().split('\n')) {
        if (const auto finding = findingFromJson(QJsonDocument::fromJson(line).object())) {
            findings.push_back(*finding);
        }
    }
    if (examination.exitStatus() != QProcess::NormalExit || findings.empty()) {
        // Qt says before it ends what it cannot do.
        const QString said = QString::fromLocal8Bit(examination.readAllStandardError()).simplified();
        findings.push_back(doctor::noDesktop(said));
    }
    return findings;
}

} // namespace

void printFinding(const Finding& finding, bool asJson) {
    if (asJson) {
        print(json::line(toJson(finding)));
    } else {
        const auto columns = terminalColumns();
        print(columns ? linesFor(finding, *columns) : lineFor(finding));
    }
}

int run(const ExamineMachine& command) {
    // Its sentences are English and hold what others say in the user's language.
    AppLanguage::overridePreference(AppLanguage::en);
    // What works apart may outlive this function.
    const std::shared_ptr<const ApplicationFiles> files = ApplicationFiles::create();
    const std::shared_ptr<const UserDefaults> defaults = UserDefaults::create();
    const auto places = doctor::Places::ofThisMachine(command.logsDir);
    const QDateTime now = QDateTime::currentDateTime();
    const NameLengths lengths = nameLengths(command.strictLengths);

    std::vector<Check> all;
    all.push_back(begin(checks::logs, [=] { return Findings{judge(gatherLogs(places, now))}; }));
    all.push_back(begin(checks::logConfig, [=, fix = command.fix ? doctor::Fix::yes : doctor::Fix::no] {
        return Findings{judge(gatherLogConfig(places, fix))};
    }));
    all.push_back(begin(checks::window, [hint = command.windowOwner.value_or(AppConfig().windowOwnerHint)] {
        return Findings{judge(doctor::gatherWindow(*WindowServer::create(), hint))};
    }));
    all.push_back(begin(checks::reader, [=] { return Findings{judge(doctor::gatherReader(*files))}; }));
    all.push_back(begin(checks::data, [=] {
        const doctor::DataAndNames found = doctor::gatherData(*files, lengths, now);
        return Findings{judge(found.data), judge(found.names)};
    }));
    all.push_back(begin(checks::desktop,
                        [program = QCoreApplication::applicationFilePath()] { return examineDesktop(program); }));
    all.push_back(
        begin(checks::configServer, [=, address = configServer(command.configServer), offline = command.offline] {
            const auto http = HttpClient::create();
            return Findings{judge(doctor::gatherConfigServer(address, offline, *http, *files))};
        }));
    all.push_back(begin(checks::updateServer, [=, asked = command.updateServer, offline = command.offline] {
        return Findings{judge(doctor::gatherUpdateServer(asked, offline, *defaults))};
    }));
    all.push_back(begin(checks::folders, [=] { return Findings{judge(doctor::gatherFolders(*files, *defaults))}; }));

    Findings every;
    bool allEnded = true;
    for (Check& check : all) {
        Findings findings;
        allEnded &= await(check, findings);
        for (const Finding& finding : findings) {
            printFinding(finding, command.json);
            every.push_back(finding);
        }
    }
    const int exitCode = exitCodeFor(every);
    if (!allEnded) {
        // What still hangs must not meet the program's end.
        std::_Exit(exitCode);
    }
    return exitCode;
}

} // namespace pelloran
