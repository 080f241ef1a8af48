#pragma once

#include "platform/freedesktop/DesktopPreferences.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QObject>
#include <QString>

#include <chrono>
#include <optional>
#include <thread>

namespace pelloran::freedesktop {

// Reads the settings portal and follows it. Nothing here waits for the bus or the portal: connecting to a bus does, so
// a thread of its own does it. Main thread otherwise.
class PortalSettings final : public QObject {
    Q_OBJECT

public:
    // A portal has to be started first, and starts its own helpers. One that comes later still is asked when it comes.
    static constexpr std::chrono::milliseconds usualPatience{10'000};

    // Of the bus; empty for the session's. `patience` is for the portal's answer.
    explicit PortalSettings(const QString& busAddress, std::chrono::milliseconds patience = usualPatience);

    // Waits for the thread, at the worst until the bus library gives up on a bus that takes connections and is silent.
    ~PortalSettings() override;

Q_SIGNALS:
    // All groups; absent when there is no bus or no portal, or the portal has gone.
    void answered(const std::optional<pelloran::freedesktop::PortalGroups>& groups);
    void changed(const QString& group, const QString& key, const QVariant& value);

private Q_SLOTS:
    void connectingEnded();
    void settingChanged(const QString& group, const QString& key, const QDBusVariant& value,
                        const QDBusMessage& message);
    void ownerChanged(const QString& name, const QString& before, const QString& now);

private:
    void readAll();

    QString connectionName;
    std::chrono::milliseconds patience;
    QDBusConnection bus;
    QString portal; // unique name of who answered; empty: nobody
    bool asking = false;
    std::optional<QDBusConnection> made; // the thread's, until it has ended
    std::thread connecting;
};

} // namespace pelloran::freedesktop
