#pragma once

#include "update/AppReleaseInfo.h"

#include <QString>

#include <variant>

namespace pelloran {

// What a check for a newer release came to. `local` is the running version.
struct AppUpdateCheckResult {
    // The running version is at least the remote one.
    struct UpToDate {
        QString local;
        QString remote;

        bool operator==(const UpToDate&) const = default;
    };

    // There is a newer release, and it is not skipped or cannot be.
    struct Available {
        QString local;
        AppReleaseInfo release;

        bool operator==(const Available&) const = default;
    };

    // There is a newer release, but the user wants none of this very version.
    struct SkippedVersion {
        QString local;
        AppReleaseInfo release;

        bool operator==(const SkippedVersion&) const = default;
    };

    // The server could not be reached, or its answer could not be used.
    struct Offline {
        QString reason;

        bool operator==(const Offline&) const = default;
    };

    // The answer was understood but names no version.
    struct Failed {
        QString message;

        bool operator==(const Failed&) const = default;
    };

    std::variant<UpToDate, Available, SkippedVersion, Offline, Failed> outcome;

    // True for `Available` and `SkippedVersion`.
    bool hasUpdate() const;

    // For the user's eyes, in the language in force.
    QString userMessage() const;

    bool operator==(const AppUpdateCheckResult&) const = default;
};

} // namespace pelloran
