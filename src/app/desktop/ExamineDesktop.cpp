#include "app/desktop/ExamineDesktop.h"

#include "app/commands/Commands.h"
#include "app/desktop/Appearance.h"
#include "app/desktop/SingleInstance.h"
#include "app/desktop/TrayStatusItem.h"
#include "app/doctor/Judgement.h"
#include "platform/GuiSession.h"
#include "platform/PanelWindow.h"
#include "platform/posix/PrivateFolder.h"

#include <QApplication>
#include <QDir>
#include <QScreen>

namespace pelloran {

namespace {

doctor::DesktopFacts gatherDesktop(const std::expected<void, QString>& session) {
    doctor::DesktopFacts facts;
    if (!session) {
        facts.noDisplay = session.error();
        return facts;
    }
    facts.display = GuiSession::display();
    facts.platform = QGuiApplication::platformName();
    for (const QScreen* screen : QGuiApplication::screens()) {
        const QSize pixels = (QSizeF(screen->size()) * screen->devicePixelRatio()).toSize();
        facts.screens.append(QStringLiteral("%1x%2").arg(pixels.width()).arg(pixels.height()));
    }
    facts.hasChineseFont = hasChineseFont();
    facts.composited = PanelWindow::create()->isComposited();
    facts.hasTray = TrayStatusItem().isAvailable();
    return facts;
}

doctor::InstanceFacts gatherInstance() {
    const QString folder = existingPrivateRuntimeFolder(qEnvironmentVariable("XDG_RUNTIME_DIR"), QDir::tempPath());
    const auto running = SingleInstance(folder, instanceName(GuiSession::display())).running();
    return running ? doctor::InstanceFacts{running->process, running->answers} : doctor::InstanceFacts{};
}

} // namespace

int examineDesktop(const ExamineDesktop& command, const std::expected<void, QString>& session) {
    std::vector<Finding> findings = doctor::judge(gatherDesktop(session));
    findings.push_back(doctor::judge(gatherInstance()));
    for (const Finding& finding : findings) {
        printFinding(finding, command.json);
    }
    return exitCodeFor(findings);
}

} // namespace pelloran
