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

// Above those that people and other programs use.
constexpr int firstNumber = 1'000;

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
    // A server that chooses takes the lowest number, also that of one that a test has just ended: whoever was to find
    // it gone would find another test's.
    static int next = firstNumber + static_cast<int>(::getpid() % 1'000) * 50;
    for (int attempt = 0; attempt < 20; ++attempt) {
        auto display = std::make_unique<VirtualDisplay>();
        if (display->startServer(next++, arguments)) {
            return display;
        }
    }
    return nullptr;
}

bool VirtualDisplay::startServer(int number, const QStringList& arguments) {
    displayName = ':' + QByteArray::number(number);
    endWithParent(server);
    server.setStandardErrorFile(QProcess::nullDevice());
    // It tells its number on standard output as soon as it takes connections, and ends where the number is taken.
    server.start(serverProgram, QStringList{QString::fromLatin1(displayName), QStringLiteral("-displayfd"),
                                            QStringLiteral("1"), QStringLiteral("-nolisten"), QStringLiteral("tcp")} +
                                    arguments);
    return server.waitForReadyRead(patience);
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
