#include "app/CommandLine.h"
#include "app/localisation/AppLanguage.h"
#include "app/MainLoop.h"
#include "app/OneShotCommands.h"
#include "platform/SystemSettings.h"
#include "platform/UserDefaults.h"

#include <QCoreApplication>

#include <cstdio>

using namespace pelloran;

int main(int argc, char** argv) {
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
    return exitCode;
}
