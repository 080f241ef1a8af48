#include "tests/support/VirtualDisplay.h"

#include "tests/support/EndWithParent.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QProcessEnvironment>
#include <QStandardPaths>

#include <unistd.h>

#include <chrono>
#include <thread>

namespace pelloran::testing {

namespace {

const QString serverProgram = QStringLiteral("Xvfb");

void end(QProcess& process) {
    if (process.state() != QProcess::NotRunning) {
        process.kill();
        process.waitForFinished(patience);
    }
}

} // namespace

bool eventually(const std::function<bool()>& condition, int milliseconds) {
    const QDeadlineTimer deadline(milliseconds);
    while (!condition()) {
        if (deadline.hasExpired()) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
}

bool VirtualDisplay::isInstalled() {
    return isInstalled(serverProgram);
}

bool VirtualDisplay::isInstalled(const QString& program) {
    return !QStandardPaths::findExecutable(program).isEmpty();
}

std::unique_ptr<VirtualDisplay> VirtualDisplay::start(const QStringList& arguments) {
    auto display = std::make_unique<VirtualDisplay>();
    QProcess& server = display->server;
    endWithParent(server);
    server.setStandardErrorFile(QProcess::nullDevice());
    // It tells its number on standard output as soon as it takes connections.
    server.start(serverProgram, QStringList{QStringLiteral("-displayfd"), QStringLiteral("1"),
                                            QStringLiteral("-nolisten"), QStringLiteral("tcp")} +
                                    arguments);
    if (!server.waitForReadyRead(patience)) {
        return nullptr;
    }
    display->displayName = ':' + server.readLine().trimmed();
    return display;
}

VirtualDisplay::~VirtualDisplay() {
    stop();
}

void VirtualDisplay::stop() {
    stopPrograms();
    end(server);
}

qint64 VirtualDisplay::residentMemory() const {
    QFile file(QStringLiteral("/proc/%1/statm").arg(processId()));
    if (!file.open(QIODevice::ReadOnly)) {
        return -1;
    }
    return file.readAll().split(' ').value(1).toLongLong() * sysconf(_SC_PAGESIZE);
}

bool VirtualDisplay::startProgram(const QString& program, const QStringList& arguments) {
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("DISPLAY"), QString::fromLatin1(displayName));
    const auto& process = programs.emplace_back(std::make_unique<QProcess>());
    endWithParent(*process);
    process->setProcessEnvironment(environment);
    process->setStandardErrorFile(QProcess::nullDevice());
    process->setStandardOutputFile(QProcess::nullDevice());
    process->start(program, arguments);
    return process->waitForStarted(patience);
}

void VirtualDisplay::stopPrograms() {
    for (const auto& process : programs) {
        end(*process);
    }
    programs.clear();
}

} // namespace pelloran::testing
