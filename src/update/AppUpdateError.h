#pragma once

#include <QString>

#include <variant>

namespace pelloran {

// What is wrong with the update server, as far as this program has words of its own for it.
struct AppUpdateError {
    struct HttpStatus {
        int code;

        bool operator==(const HttpStatus&) const = default;
    };

    struct BadURL {
        bool operator==(const BadURL&) const = default;
    };

    struct InvalidLatest {
        bool operator==(const InvalidLatest&) const = default;
    };

    std::variant<HttpStatus, BadURL, InvalidLatest> reason;

    // In the language in force.
    QString localizedDescription() const;

    bool operator==(const AppUpdateError&) const = default;
};

} // namespace pelloran
