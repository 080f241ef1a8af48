#pragma once

#include "tests/platform/x11/TestClient.h"
#include "tests/support/ProgramRun.h"
#include "tests/support/VirtualDisplay.h"

#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>

namespace pelloran::testing {

// Like `eventually`, but for what other programs do: their output is taken in meanwhile, and a busy machine has time.
bool until(const std::function<bool()>& condition, int milliseconds = 30'000);

// PELLORAN_TEST_PROGRAM and PELLORAN_TEST_STAGE name others than were built.
QString pelloranProgram();
QString stageProgram();

// A program whose standard output is one JSON object a line.
class LineProcess {
public:
    LineProcess();
    ~LineProcess();

    void start(const QString& program, const QStringList& arguments, const QProcessEnvironment& environment);

    // Reads on until a line satisfies `wanted`; absent when none does within a minute or the program ends.
    std::optional<QJsonObject> waitFor(const std::function<bool(const QJsonObject&)>& wanted);

    // Waits until the program has printed a line that it began after this call.
    bool printsAnother();

    void write(const QByteArray& text) { process.write(text); }

    QProcess process;
    QJsonObject last;         // line that was read
    QByteArray standardError; // so far

private:
    bool readLine();
};

// The real programs on a display of their own, with folders of their own.
class DesktopTest : public ::testing::Test {
protected:
    void SetUp() override;

    // The ways to furnish the display; false, or a skipped test, when one cannot be had.
    void startWindowManager();
    void startCompositor();
    void startTray();
    void needs(const QString& program);

    void startPelloran(const QStringList& arguments);
    void startStage(const QStringList& arguments);

    // Plays on to the next step of that kind.
    void playTo(const QString& kind);

    QTemporaryDir home;
    QString logsDir = home.path() + QStringLiteral("/logs");
    QProcessEnvironment environment = cleanEnvironment(home.path());
    std::unique_ptr<VirtualDisplay> display;
    std::unique_ptr<TestClient> client;
    LineProcess stage;
    LineProcess pelloran;
};

} // namespace pelloran::testing
