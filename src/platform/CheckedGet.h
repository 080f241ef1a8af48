#pragma once

#include "platform/HttpClient.h"

#include <variant>

namespace pelloran {

// The server answered, but not with what was asked for.
struct UnwantedStatus {
    int code;
};

using CheckedGetError = std::variant<UnwantedStatus, HttpClient::TransportError>;

// The body of an answer with a status from 200 to 299. `silence` is how long the server may send nothing; one that
// keeps sending a little is given two seconds longer. `accept` and `maximumBytes`: see HttpClient::Request.
std::expected<QByteArray, CheckedGetError> checkedGet(HttpClient& http, const QUrl& url, const QByteArray& accept,
                                                      std::chrono::milliseconds silence, qint64 maximumBytes);

} // namespace pelloran
