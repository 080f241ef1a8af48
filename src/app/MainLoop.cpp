#include "app/MainLoop.h"

#include "app/DraftParts.h"
#include "base/Log.h"
#include "localisation/AppLanguage.h"
#include "platform/posix/TerminationSignals.h"

#include <QCoreApplication>

namespace pelloran {

int run(const RunLoop& command) {
    const TerminationSignals signals;
    DraftParts parts(command);
    if (!parts.recorder) {
        return 1; // it is what this run was for
    }
    if (const auto loaded = parts.store.loadFromBundle(); !loaded) {
        log(loadFailureLine(loaded.error()));
        return 1;
    }
    remarkOnSampleData(parts.store);

    DraftService service(parts.config, parts.store, *parts.recognition, parts.screenReader);
    service.delegate = parts.printer;
    parts.observe(service);
    service.start();
    log(bootLine(parts.store));
    QObject::connect(&AppLanguageNotifier::shared(), &AppLanguageNotifier::posted, &service,
                     &DraftService::relocalizeAndRefresh);

    const int exitCode = QCoreApplication::exec();
    service.stop();
    return exitCode;
}

} // namespace pelloran
