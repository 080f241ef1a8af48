#include "tests/soak/DesktopRun.h"

#include "tests/platform/x11/TestClient.h"
#include "tests/soak/DataServer.h"
#include "tests/support/EndWithParent.h"
#include "tests/support/ProcessStatus.h"
#include "tests/support/ProgramRun.h"
#include "tests/support/VirtualDisplay.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

namespace pelloran::soak {

namespace {

constexpr int secondsBetweenSamples = 5;
constexpr const char* speed = "3"; // of the game: a draft in some two minutes

void end(QProcess& process) {
    process.terminate();
    if (!process.waitForFinished(testing::patience)) {
        process.kill();
        process.waitForFinished();
    }
}

// Makes a process that ends with this one and writes its diagnostics to `log`.
std::unique_ptr<QProcess> start(const char* program, const QStringList& arguments,
                                const QProcessEnvironment& environment, const QString& log) {
    auto process = std::make_unique<QProcess>();
    testing::endWithParent(*process);
    process->setProcessEnvironment(environment);
    process->setStandardErrorFile(log, QIODevice::Append);
    process->start(QString::fromLocal8Bit(program), arguments);
    return process->waitForStarted(testing::patience) ? std::move(process) : nullptr;
}

} // namespace

std::expected<std::vector<Sample>, QString> followOnDesktop(std::chrono::minutes length,
                                                            const std::function<bool(const Sample&)>& goOn) {
    const QTemporaryDir home;
    const QString logs = home.filePath(QStringLiteral("logs"));
    const QString session = home.filePath(QStringLiteral("session"));
    QDir().mkpath(logs);
    QDir().mkpath(session);
    QFile::setPermissions(session, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    DataServer server;
    if (!server.start(home.filePath(QStringLiteral("published")))) {
        return std::unexpected(QStringLiteral("no server of data"));
    }
    const auto display = testing::VirtualDisplay::start(
        {QStringLiteral("-screen"), QStringLiteral("0"), QStringLiteral("1920x1080x24")});
    if (!display) {
        return std::unexpected(QStringLiteral("Xvfb does not start"));
    }
    testing::TestClient client(display->name());
    if (!testing::startWindowManager(*display, client)) {
        return std::unexpected(QStringLiteral("openbox does not start"));
    }
    QProcessEnvironment environment = testing::cleanEnvironment(home.path());
    environment.insert(QStringLiteral("DISPLAY"), QString::fromLatin1(display->name()));
    environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), session);
    environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), QStringLiteral("disabled:"));

    const auto program = start(PELLORAN_PROGRAM,
                               {QStringLiteral("--logs-dir"), logs, QStringLiteral("--config-server"), server.url(),
                                QStringLiteral("--update-server"), server.url(), QStringLiteral("--snapshots")},
                               environment, home.filePath(QStringLiteral("log")));
    if (!program) {
        return std::unexpected(QStringLiteral("the program does not start"));
    }
    std::unique_ptr<QProcess> game;
    int drafts = 0;
    qint64 ticks = 0;
    qint64 withCards = 0;
    std::vector<Sample> samples;
    qint64 ticksBefore = 0;
    auto workBefore = testing::processorTimeOf(program->processId()).value_or(std::chrono::milliseconds());
    QElapsedTimer sinceStart;
    sinceStart.start();
    const QDeadlineTimer deadline(length);
    while (!deadline.hasExpired()) {
        if (!game || game->state() == QProcess::NotRunning) {
            const QString scenario = ++drafts % 2 == 1 ? QStringLiteral("draft") : QStringLiteral("draft-zh");
            game = start(PELLORAN_STAGE,
                         {QStringLiteral("--logs-dir"), logs, QStringLiteral("--scenario"), scenario,
                          QStringLiteral("--speed"), QString::fromLatin1(speed), QStringLiteral("--exit-at-end")},
                         environment, QProcess::nullDevice());
            if (!game) {
                return std::unexpected(QStringLiteral("the simulated game does not start"));
            }
        }
        QTest::qWait(secondsBetweenSamples * 1000);
        if (program->state() == QProcess::NotRunning) {
            return std::unexpected(QStringLiteral("the program has ended"));
        }
        game->readAllStandardOutput();
        while (program->canReadLine()) {
            ++ticks;
            withCards += program->readLine().contains("\"recognized\":true") ? 1 : 0;
        }
        auto sample = sampleOf(program->processId());
        const auto work = testing::processorTimeOf(program->processId());
        if (!sample || !work) {
            return std::unexpected(QStringLiteral("the program cannot be looked at"));
        }
        sample->tick = ticks;
        sample->seconds = static_cast<double>(sinceStart.elapsed()) / 1000;
        const auto passed = static_cast<double>(ticks - ticksBefore);
        sample->tickCost =
            passed > 0 ? std::chrono::duration<double, std::micro>(*work - workBefore).count() / passed : 0;
        ticksBefore = ticks;
        workBefore = *work;
        samples.push_back(*sample);
        if (!goOn(*sample)) {
            break;
        }
    }
    end(*game);
    end(*program);
    if (withCards * 2 < ticks) {
        return std::unexpected(
            QStringLiteral("only %1 of %2 ticks showed figures: that was no draft").arg(withCards).arg(ticks));
    }
    return samples;
}

} // namespace pelloran::soak
