#include "app/CommandLine.h"
#include "app/localisation/AppLanguage.h"
#include "app/MainLoop.h"
#include "app/OneShotCommands.h"
#include "platform/Log.h"
#include "platform/SystemSettings.h"
#include "platform/UserDefaults.h"

#include <QCoreApplication>

#include <cstdio>

using namespace pelloran;

namespace {

// What Qt has to say goes where our own diagnostics go.
void logQtMessage(QtMsgType, const QMessageLogContext&, const QString& message) {
    log(message);
}

} // namespace

int main(int argc, char** argv) {
    qInstallMessageHandler(logQtMessage);
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("Pelloran"));
    QCoreApplication::setApplicationVersion(QStringLiteral(PELLORAN_VERSION));

    const auto command = parseCommandLine(QCoreApplication::arguments().mid(1));
    if (!command) {
        std::fputs(command.error().message.toUtf8().constData(), stderr);
        return 2;
    }
    const auto defaults = UserDefaults::create();
    const auto settings = SystemSettings::create();
    AppLanguage::configure(defaults.get(), settings.get());
    if (const auto* loop = std::get_if<RunLoop>(&*command); loop && loop->language) {
        AppLanguage::overridePreference(*loop->language);
    }
    const int exitCode = std::visit([](const auto& chosen) { return run(chosen); }, *command);
    AppLanguage::configure(nullptr, nullptr);
    if (std::ferror(stdout) != 0) {
        log(QStringLiteral("standard output could not be written"));
        return 1;
    }
    return exitCode;
}
