#include "app/DraftParts.h"

#include "app/Commit.h"
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

#include <utility>

namespace pelloran {

namespace {

AppConfig configFor(const RunLoop& command) {
    AppConfig config;
    config.logsDir = logsDirToRead(command.logsDir);
    if (!QFileInfo(config.logsDir).isDir()) {
        log(QStringLiteral("no log folder of the game found; waiting for one at %1%2")
                .arg(config.logsDir, command.logsDir
                                         ? QString()
                                         : QStringLiteral("; one in a Wine prefix is found when Pelloran is started "
                                                          "again, or waited for where --logs-dir names it")));
    }
    if (command.windowOwner) {
        config.windowOwnerHint = *command.windowOwner;
    }
    config.nameLengths = nameLengths(command.strictLengths);
    return config;
}

std::expected<std::unique_ptr<Recorder>, QString> recorderFor(const RunLoop& command, const AppConfig& config,
                                                              const WinrateStore& store) {
    if (!command.record) {
        return nullptr;
    }
    constexpr qint64 megabyte = 1'000'000;
    auto recorder = Recorder::create({.folder = *command.record,
                                      .limit = command.recordMegabytes * megabyte,
                                      .program = QStringLiteral(PELLORAN_VERSION),
                                      .commit = QString::fromUtf8(commit()),
                                      .windowOwnerHint = config.windowOwnerHint,
                                      .nameLengths = config.nameLengths,
                                      .snapshotToJson = json::toJson},
                                     store);
    if (!recorder) {
        log(QStringLiteral("nothing is recorded: %1").arg(recorder.error()));
    }
    return recorder;
}

// `made` itself, or, with a recorder, one around it by which that sees what it gives.
template <typename Seam>
std::unique_ptr<Seam> watched(std::unique_ptr<Seam> made, Recorder* recorder) {
    return recorder ? recorder->watched(std::move(made)) : std::move(made);
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
    , recorder(recorderFor(command, config, store))
    , screenReader([this] { return watched(WindowServer::create(), activeRecorder()); },
                   [this] {
                       auto reader = TextReader::create(*files);
                       if (reader) {
                           reader = watched(*std::move(reader), activeRecorder());
                       }
                       return reader;
                   })
    , recognition(SerialQueue::create(QStringLiteral("com.local.pelloran.recognition")))
    , printer(command.snapshots ? std::make_shared<SnapshotPrinter>() : nullptr) {
    // Before the data is loaded.
    ConfigInstaller(LocalConfig(*files)).restoreInterruptedSwap();
}

DraftParts::~DraftParts() = default;

void DraftParts::observe(const DraftService& service) const {
    if (activeRecorder()) {
        activeRecorder()->follow(service);
    }
}

void DraftParts::finishRecording() const {
    if (activeRecorder()) {
        activeRecorder()->catchUp();
    }
}

Recorder* DraftParts::activeRecorder() const {
    return recorder ? recorder->get() : nullptr;
}

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
