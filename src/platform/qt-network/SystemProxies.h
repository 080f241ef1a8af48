#pragma once

#include <QDeadlineTimer>
#include <QNetworkProxyFactory>

namespace pelloran {

// The system's proxies, for one request. Finding them can mean to fetch a script from a server that never answers, and
// nothing limits that: so a thread of its own asks, and who wants to know waits only until `deadline`, or until the
// interruption of its QThread is requested.
class SystemProxies final : public QNetworkProxyFactory {
public:
    explicit SystemProxies(QDeadlineTimer patience)
        : deadline(patience) {}

    // What no request can use where they were not found in time.
    QList<QNetworkProxy> queryProxy(const QNetworkProxyQuery& query) override;

    bool wereFound() const { return found; }

private:
    const QDeadlineTimer deadline;
    bool found = true;
};

} // namespace pelloran
