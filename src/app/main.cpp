#include "app/CommandLine.h"
#include "app/commands/Commands.h"
#include "app/desktop/DesktopApplication.h"
#include "app/desktop/ExamineDesktop.h"
#include "app/MainLoop.h"
#include "base/Log.h"
#include "localisation/AppLanguage.h"
#include "platform/GuiSession.h"
#include "platform/HttpClient.h"
#include "platform/posix/StandardStreams.h"
#include "platform/SystemLog.h"
#include "platform/SystemSettings.h"
#include "platform/UserDefaults.h"

#include <QApplication>

#include <cstdio>
#include <cstdlib>
#include <expected>
#include <memory>

using namespace pelloran;

namespace {

// What Qt has to say goes where our own diagnostics go.
void logQtMessage(QtMsgType, const QMessageLogContext&, const QString& message) {
    log(message);
}

struct RunCommand {
    template <typename Chosen>
    int operator()(const Chosen& chosen) const {
        return run(chosen);
    }

    int operator()(const ExamineDesktop&) const { Q_UNREACHABLE(); } // needs to know of the session
};

} // namespace

int main(int argc, char** argv) {
    holdStandardStreams();
    qInstallMessageHandler(logQtMessage);
    QStringList arguments;
    for (int i = 1; i < argc; ++i) {
        arguments.append(QString::fromLocal8Bit(argv[i]));
    }
    const auto command = parseCommandLine(arguments);
    if (!command) {
        std::fputs(command.error().message.toUtf8().constData(), stderr);
        return 2;
    }
    const auto* loop = std::get_if<RunLoop>(&*command);
    const bool withPanel = loop && loop->panel;
    const auto* examination = std::get_if<ExamineDesktop>(&*command);
    const bool onDesktop = withPanel || examination;
    if (withPanel) {
        setLogSink(SystemLog::sink()); // commands have somebody who reads their standard error
    }
    const auto session = onDesktop ? GuiSession::prepare() : std::expected<void, QString>();

    // Only the panel, and what of `doctor` looks at the desktop, need a display and the bigger application object with
    // it.
    std::unique_ptr<QCoreApplication> application;
    if (onDesktop && session) {
        application = std::make_unique<QApplication>(argc, argv);
    } else {
        application = std::make_unique<QCoreApplication>(argc, argv);
    }
    QCoreApplication::setApplicationName(QStringLiteral("Pelloran"));
    QCoreApplication::setApplicationVersion(QStringLiteral(PELLORAN_VERSION));
    int exitCode = 0;
    {
        const auto defaults = UserDefaults::create();
        const auto settings = SystemSettings::create();
        AppLanguage::configure(defaults.get(), settings.get());
        if (loop && loop->language) {
            AppLanguage::overridePreference(*loop->language);
        }
        if (examination) {
            exitCode = examineDesktop(*examination, session);
        } else if (!withPanel) {
            exitCode = std::visit(RunCommand(), *command);
        } else if (session) {
            exitCode = runOnDesktop(*loop, *settings, *defaults);
        } else {
            exitCode = failWithoutDisplay(session.error());
        }
        AppLanguage::configure(nullptr, nullptr);
    }
    if (std::ferror(stdout) != 0) {
        log(QStringLiteral("standard output could not be written"));
        exitCode = 1;
    }
    if (HttpClient::mayBeLookingUp()) {
        // All that is ours is stored and ended; what is left is Qt's, whose end waits for the resolver: up to half a
        // minute where no name server answers, and nothing can call it off.
        std::fflush(nullptr);
        std::_Exit(exitCode);
    }
    return exitCode;
}
