#pragma once

#include <QString>

#include <optional>
#include <variant>

namespace pelloran {

// How a sync ended. Whatever it says, the data in use is whole: the new one after `Updated`, else the one before.
struct ConfigSyncResult {
    struct UpToDate {
        QString hash;

        bool operator==(const UpToDate&) const = default;
    };

    struct Updated {
        QString hash;

        bool operator==(const Updated&) const = default;
    };

    // It failed, and there are files of an earlier sync to go on with.
    struct SkippedOffline {
        std::optional<QString> localHash;
        QString reason; // for the user's eyes, as is Failed's message

        bool operator==(const SkippedOffline&) const = default;
    };

    // It failed, and there are none.
    struct Failed {
        QString message;

        bool operator==(const Failed&) const = default;
    };

    // Another sync is under way, here or in another running copy of the program.
    struct SkippedBusy {
        bool operator==(const SkippedBusy&) const = default;
    };

    std::variant<UpToDate, Updated, SkippedOffline, Failed, SkippedBusy> outcome;

    // In the language in force.
    QString userMessage() const;

    // Whether it has put other files into the configuration folder.
    bool didUpdateFiles() const { return std::holds_alternative<Updated>(outcome); }

    bool operator==(const ConfigSyncResult&) const = default;
};

} // namespace pelloran
