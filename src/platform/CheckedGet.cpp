#include "platform/CheckedGet.h"

#include <utility>

namespace pelloran {

std::expected<QByteArray, CheckedGetError> checkedGet(HttpClient& http, const QUrl& url, const QByteArray& accept,
                                                      std::chrono::milliseconds silence, qint64 maximumBytes) {
    constexpr std::chrono::seconds grace{2};
    auto response = http.get({.url = url,
                              .accept = accept,
                              .transferTimeout = silence,
                              .deadline = silence + grace,
                              .maximumBytes = maximumBytes});
    if (!response) {
        return std::unexpected(std::move(response).error());
    }
    if (response->status < 200 || response->status > 299) {
        return std::unexpected(UnwantedStatus{response->status});
    }
    return std::move(response->body);
}

} // namespace pelloran
