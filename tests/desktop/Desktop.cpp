#include "tests/desktop/Desktop.h"

#include "tests/support/EndWithParent.h"

#include <QDir>
#include <QJsonDocument>
#include <QTest>

namespace pelloran::testing {

bool until(const std::function<bool()>& condition, int milliseconds) {
    return QTest::qWaitFor(condition, milliseconds);
}

QString pelloranProgram() {
    return programToTest("PELLORAN_TEST_PROGRAM", PELLORAN_PROGRAM);
}

QString stageProgram() {
    return programToTest("PELLORAN_TEST_STAGE", PELLORAN_STAGE);
}

LineProcess::LineProcess() {
    endWithParent(process);
    QObject::connect(&process, &QProcess::readyReadStandardError, &process, [this] {
        const QByteArray said = process.readAllStandardError();
        standardError += said;
        std::fwrite(said.constData(), 1, static_cast<std::size_t>(said.size()), stderr);
    });
}

LineProcess::~LineProcess() {
    process.terminate();
    if (!process.waitForFinished(10'000)) {
        process.kill();
        process.waitForFinished();
    }
}

void LineProcess::start(const QString& program, const QStringList& arguments, const QProcessEnvironment& environment) {
    process.setProcessEnvironment(environment);
    process.start(program, arguments);
}

bool LineProcess::readLine() {
    if (!process.canReadLine()) {
        return false;
    }
    last = QJsonDocument::fromJson(process.readLine()).object();
    return true;
}

std::optional<QJsonObject> LineProcess::waitFor(const std::function<bool(const QJsonObject&)>& wanted) {
    std::optional<QJsonObject> found;
    const auto look = [&] {
        while (!found && readLine()) {
            if (wanted(last)) {
                found = last;
            }
        }
        return found.has_value();
    };
    (void)until([&] { return look() || process.state() == QProcess::NotRunning; }, 60'000);
    return found;
}

bool LineProcess::printsAnother() {
    while (readLine()) {
    }
    // The first one may have been begun before.
    const auto any = [](const QJsonObject&) { return true; };
    return waitFor(any) && waitFor(any);
}

void DesktopTest::SetUp() {
    if (!VirtualDisplay::isInstalled()) {
        GTEST_SKIP() << "needs Xvfb, which is not installed";
    }
    display = VirtualDisplay::start({QStringLiteral("-screen"), QStringLiteral("0"), QStringLiteral("1920x1080x24")});
    ASSERT_TRUE(display) << "Xvfb does not start";
    client = std::make_unique<TestClient>(display->name());
    environment.insert(QStringLiteral("DISPLAY"), QString::fromLatin1(display->name()));
    // A desktop's session has such a folder; there is none of a test's own otherwise.
    const QString session = home.path() + QStringLiteral("/session");
    ASSERT_TRUE(QDir().mkpath(logsDir) && QDir().mkpath(session));
    ASSERT_TRUE(QFile::setPermissions(session, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), session);
    // The settings of whoever runs the tests are not the test's.
    environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), QStringLiteral("disabled:"));
}

void DesktopTest::needs(const QString& program) {
    if (!VirtualDisplay::isInstalled(program)) {
        GTEST_SKIP() << "needs " << program.toStdString() << ", which is not installed";
    }
}

void DesktopTest::startWindowManager() {
    needs(QStringLiteral("openbox"));
    if (!IsSkipped()) {
        ASSERT_TRUE(testing::startWindowManager(*display, *client)) << "openbox does not come up";
    }
}

void DesktopTest::startCompositor() {
    needs(QStringLiteral("picom"));
    if (!IsSkipped()) {
        ASSERT_TRUE(
            display->startProgram(QStringLiteral("picom"), {QStringLiteral("--backend"), QStringLiteral("xrender"),
                                                            QStringLiteral("--config"), QProcess::nullDevice()}));
        ASSERT_TRUE(until([this] { return client->hasOwner("_NET_WM_CM_S0"); })) << "picom does not come up";
    }
}

void DesktopTest::startTray() {
    needs(QStringLiteral("trayer"));
    if (!IsSkipped()) {
        ASSERT_TRUE(display->startProgram(QStringLiteral("trayer"),
                                          {QStringLiteral("--edge"), QStringLiteral("top"), QStringLiteral("--align"),
                                           QStringLiteral("right"), QStringLiteral("--height"), QStringLiteral("26"),
                                           QStringLiteral("--widthtype"), QStringLiteral("request")}));
        ASSERT_TRUE(until([this] { return client->hasOwner("_NET_SYSTEM_TRAY_S0"); })) << "trayer does not come up";
    }
}

void DesktopTest::startPelloran(const QStringList& arguments) {
    pelloran.start(pelloranProgram(), QStringList{QStringLiteral("--logs-dir"), logsDir} + arguments, environment);
}

void DesktopTest::startStage(const QStringList& arguments) {
    stage.start(stageProgram(),
                QStringList{QStringLiteral("--logs-dir"), logsDir, QStringLiteral("--steps-on-stdin")} + arguments,
                environment);
}

void DesktopTest::playTo(const QString& kind) {
    stage.write("next\n");
    while (const auto step = stage.waitFor([](const QJsonObject&) { return true; })) {
        if ((*step)[QStringLiteral("kind")].toString() == kind) {
            return;
        }
        stage.write("next\n");
    }
    ADD_FAILURE() << "the scenario has no more " << kind.toStdString();
}

} // namespace pelloran::testing
