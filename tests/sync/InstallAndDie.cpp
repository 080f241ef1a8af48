// Installs one bundle and is killed after one step: install-and-die FOLDER HASH BUNDLE exchange|moves STEP. Without a
// step it mends and ends. STEP -1 installs to the end. FOLDER holds support/ and temporary/.

#include "sync/ConfigInstaller.h"
#include "sync/InstallTools.h"
#include "tests/fakes/FakeApplicationFiles.h"

#include <QCoreApplication>
#include <QFile>

#include <csignal>
#include <cstdio>

int main(int argc, char** argv) {
    using namespace pelloran;
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    const testing::FakeApplicationFiles files(arguments.at(1));
    const int fatalStep = arguments.size() > 5 ? arguments.at(5).toInt() : -1;

    InstallTools tools;
    tools.temporaryFolder = arguments.at(1) + QStringLiteral("/temporary");
    if (arguments.value(4) == QStringLiteral("moves")) {
        tools.exchange = [](const auto&, const auto&) { return std::make_error_code(std::errc::not_supported); };
    }
    tools.after = [fatalStep](InstallStep step) {
        if (static_cast<int>(step) == fatalStep) {
            std::raise(SIGKILL);
        }
    };
    const ConfigInstaller installer(LocalConfig(files), tools);
    installer.restoreInterruptedSwap();
    if (arguments.size() <= 2) {
        return 0;
    }
    QFile bundle(arguments.at(3));
    if (!bundle.open(QIODevice::ReadOnly)) {
        return 2;
    }
    RemoteManifest manifest;
    manifest.hash = arguments.at(2);
    const auto installed = installer.install(manifest, "{}", bundle.readAll());
    if (!installed) {
        std::fprintf(stderr, "%s\n", qPrintable(installed.error().localizedDescription()));
        return 1;
    }
    return *installed == ConfigInstaller::Installation::done ? 0 : 3;
}
