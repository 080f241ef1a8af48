#include "app/DraftParts.h"

#include "app/Json.h"
#include "base/Log.h"
#include "base/SerialQueue.h"
#include "data/DataErrorText.h"
#include "draft/logs/LogsDir.h"
#include "localisation/AppLanguage.h"
#include "localisation/L10n.h"
#include "platform/ApplicationFiles.h"
#include "platform/TextReader.h"
#include "platform/WindowServer.h"
#include "sync/ConfigInstaller.h"

#include <QFileInfo>

#include <unistd.h>

namespace pelloran {

namespace {

AppConfig configFor(const RunLoop& command) {
    AppConfig config;
    config.logsDir = logsDirToRead(command.logsDir);
    if (!QFileInfo(config.logsDir).isDir()) {
        log(QStringLiteral("no log folder of the game found; waiting for one at %1").arg(config.logsDir));
    }
    if (command.windowOwner) {
        config.windowOwnerHint = *command.windowOwner;
    }
    config.nameLengths = nameLengths(command.strictLengths);
    return config;
}

} // namespace

SnapshotPrinter::SnapshotPrinter()
    : output(STDOUT_FILENO) {}

void SnapshotPrinter::draftServiceDidUpdate(const OverlaySnapshot& snapshot) {
    output.write(json::line(json::toJson(snapshot)));
}

DraftParts::DraftParts(const RunLoop& command)
    : files(ApplicationFiles::create())
    , config(configFor(command))
    , store(*files)
    , screenReader(WindowServer::create, [this] { return TextReader::create(*files); })
    , recognition(SerialQueue::create(QStringLiteral("com.local.pelloran.recognition")))
    , printer(command.snapshots ? std::make_shared<SnapshotPrinter>() : nullptr) {
    // Before the data is loaded.
    ConfigInstaller(LocalConfig(*files)).restoreInterruptedSwap();
}

DraftParts::~DraftParts() = default;

QString loadFailureLine(const DataError& error) {
    return L10n::tr(u"fatal.loadTitle") + QStringLiteral(": ") + describe(error);
}

QString bootLine(const WinrateStore& store) {
    return QStringLiteral("boot cards=%1; source=%2; lang=%3")
        .arg(store.metaDescription(), store.cardsSourceDescription(), AppLanguage::resolvedPreference().rawValue());
}

void remarkOnSampleData(const WinrateStore& store) {
    if (store.holdsSampleData()) {
        log(QStringLiteral(
            "the figures in use are invented samples, for a look at the program; they say nothing of any card"));
    }
}

} // namespace pelloran
