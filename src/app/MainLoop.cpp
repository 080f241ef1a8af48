#include "app/MainLoop.h"

#include "app/DataErrorText.h"
#include "app/Json.h"
#include "app/LineWriter.h"
#include "app/localisation/L10n.h"
#include "app/LogsDir.h"
#include "app/TerminationSignals.h"
#include "data/WinrateStore.h"
#include "draft/DraftService.h"
#include "platform/ApplicationFiles.h"
#include "platform/Log.h"
#include "platform/SerialQueue.h"
#include "platform/TextReader.h"
#include "platform/WindowServer.h"
#include "recognition/ScreenReader.h"

#include <QCoreApplication>
#include <QFileInfo>

#include <unistd.h>

namespace pelloran {

namespace {

// Prints every snapshot for who asked for them.
class SnapshotPrinter final : public DraftServiceDelegate {
public:
    void draftServiceDidUpdate(const OverlaySnapshot& snapshot) override {
        output.write(json::line(json::toJson(snapshot)));
    }

private:
    LineWriter output{STDOUT_FILENO};
};

} // namespace

int run(const RunLoop& command) {
    const TerminationSignals signals;
    const auto files = ApplicationFiles::create();
    WinrateStore store(*files);
    if (const auto loaded = store.loadFromBundle(); !loaded) {
        log(L10n::tr(u"fatal.loadTitle") + QStringLiteral(": ") + describe(loaded.error()));
        return 1;
    }
    if (store.holdsSampleData()) {
        log(QStringLiteral(
            "the figures in use are invented samples, for a look at the program; they say nothing of any card"));
    }

    AppConfig config;
    config.logsDir = logsDirToRead(command.logsDir);
    if (!QFileInfo(config.logsDir).isDir()) {
        log(QStringLiteral("no log folder of the game found; waiting for one at %1").arg(config.logsDir));
    }
    if (command.windowOwner) {
        config.windowOwnerHint = *command.windowOwner;
    }
    // In this order, so that the service goes first and the queue waits for the look under way before what it uses
    // goes.
    ScreenReader screenReader(WindowServer::create, TextReader::create);
    const auto recognition = SerialQueue::create(QStringLiteral("com.local.pelloran.recognition"));
    DraftService service(config, store, *recognition, screenReader);

    std::shared_ptr<DraftServiceDelegate> printer;
    if (command.snapshots) {
        printer = std::make_shared<SnapshotPrinter>();
        service.delegate = printer;
    }
    service.start();
    log(QStringLiteral("boot cards=%1; source=%2; lang=%3")
            .arg(store.metaDescription(), store.cardsSourceDescription(),
                 AppLanguage::resolvedPreference().rawValue()));
    QObject::connect(&AppLanguageNotifier::shared(), &AppLanguageNotifier::posted, &service,
                     &DraftService::relocalizeAndRefresh);

    const int exitCode = QCoreApplication::exec();
    service.stop();
    return exitCode;
}

} // namespace pelloran
