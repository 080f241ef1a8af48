#include "platform/qt-network/SystemProxies.h"

#include <QThread>

#include <atomic>
#include <chrono>
#include <future>
#include <thread>
#include <utility>

namespace pelloran {

namespace {

using namespace std::chrono_literals;

constexpr auto poll = 20ms;

// Lookups that hang do not pile up: the next one waits for the last. Needs no destructor, so that a thread that comes
// home after the end of main() still finds it.
constinit std::atomic<bool> isAsking = false;

std::future<QList<QNetworkProxy>> ask(const QNetworkProxyQuery& query) {
    std::promise<QList<QNetworkProxy>> answer;
    auto future = answer.get_future();
    std::thread([query, promise = std::move(answer)]() mutable {
        // Not proxyForQuery(): it holds a lock meanwhile that every socket of this process takes.
        promise.set_value(QNetworkProxyFactory::systemProxyForQuery(query));
        isAsking = false;
    }).detach();
    return future;
}

} // namespace

QList<QNetworkProxy> SystemProxies::queryProxy(const QNetworkProxyQuery& query) {
    const auto mayWait = [this] {
        return !deadline.hasExpired() && !QThread::currentThread()->isInterruptionRequested();
    };
    std::future<QList<QNetworkProxy>> answer;
    while (mayWait()) {
        if (!answer.valid() && !isAsking.exchange(true)) {
            answer = ask(query);
        }
        if (!answer.valid()) {
            std::this_thread::sleep_for(poll);
        } else if (answer.wait_for(poll) == std::future_status::ready) {
            return answer.get();
        }
    }
    found = false;
    return {QNetworkProxy(QNetworkProxy::FtpCachingProxy)};
}

} // namespace pelloran
