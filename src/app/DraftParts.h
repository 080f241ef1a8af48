#pragma once

#include "app/CommandLine.h"
#include "data/WinrateStore.h"
#include "draft/DraftService.h"
#include "platform/posix/LineWriter.h"
#include "recognition/ScreenReader.h"
#include "recording/Recorder.h"

#include <QString>

#include <expected>
#include <memory>

namespace pelloran {

class ApplicationFiles;
class SerialQueue;

// Prints every snapshot for who asked for them.
class SnapshotPrinter final : public DraftServiceDelegate {
public:
    SnapshotPrinter();

    void draftServiceDidUpdate(const OverlaySnapshot& snapshot) override;

private:
    LineWriter output;
};

// What following a draft takes, with a panel or without. Whoever makes a DraftService of it destroys that first.
class DraftParts {
public:
    // Needs the application object. Says where it waits for a log folder that is not there yet. Loads nothing.
    explicit DraftParts(const RunLoop& command);
    ~DraftParts();

    // Has what a service does recorded, if that was asked for. Before it starts.
    void observe(const DraftService& service) const;

    // Writes what has been taken for a recording, if there is one. For an end at which this is not destroyed.
    void finishRecording() const;

    const std::unique_ptr<ApplicationFiles> files;
    const AppConfig config;
    WinrateStore store;
    // In this order, so that the queue waits for the look under way before what it uses goes.
    const std::expected<std::unique_ptr<Recorder>, QString> recorder; // null: nobody asked; the error has been logged
    ScreenReader screenReader;
    const std::unique_ptr<SerialQueue> recognition;
    const std::shared_ptr<SnapshotPrinter> printer; // null: nobody asked

private:
    Recorder* activeRecorder() const; // null: nothing is recorded
};

// Lines for the log.
QString loadFailureLine(const DataError& error);
QString bootLine(const WinrateStore& store);

// Figures that somebody made up must not be taken for real ones.
void remarkOnSampleData(const WinrateStore& store);

} // namespace pelloran
