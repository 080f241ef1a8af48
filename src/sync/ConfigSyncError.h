#pragma once

#include <QString>

#include <variant>

namespace pelloran {

// Why a sync did not get new data.
struct ConfigSyncError {
    struct HttpStatus {
        int code;

        bool operator==(const HttpStatus&) const = default;
    };

    // SHA-256 of the bundle, as the manifest gives it and as reckoned.
    struct HashMismatch {
        QString expected;
        QString got;

        bool operator==(const HashMismatch&) const = default;
    };

    // The bundle does not unpack, or must not be unpacked.
    struct ExtractFailed {
        QString message;

        bool operator==(const ExtractFailed&) const = default;
    };

    struct BadURL {
        bool operator==(const BadURL&) const = default;
    };

    struct InvalidManifest {
        bool operator==(const InvalidManifest&) const = default;
    };

    // Of the network, the JSON parser or the file system, passed on in its own words.
    struct Platform {
        QString description;

        bool operator==(const Platform&) const = default;
    };

    std::variant<HttpStatus, HashMismatch, ExtractFailed, BadURL, InvalidManifest, Platform> reason;

    // For the user's eyes, in the language in force.
    QString localizedDescription() const;

    bool operator==(const ConfigSyncError&) const = default;
};

} // namespace pelloran
