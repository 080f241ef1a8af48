#include "platform/freedesktop/PortalSettings.h"

#include "platform/freedesktop/PortalNames.h"

#include <QDBusArgument>
#include <QDBusMetaType>
#include <QDBusPendingCall>
#include <QDBusPendingCallWatcher>
#include <QFileInfo>
#include <QMetaObject>
#include <QStringList>

#include <atomic>
#include <utility>

namespace pelloran::freedesktop {

namespace {

const QString service = QStringLiteral("org.freedesktop.portal.Desktop");
const QString path = QStringLiteral("/org/freedesktop/portal/desktop");
const QString interface = QStringLiteral("org.freedesktop.portal.Settings");

constexpr int deepestVariant = 4; // older portals put a value into a variant in a variant

QVariant unwrapped(QVariant value) {
    for (int i = 0; i < deepestVariant && value.userType() == qMetaTypeId<QDBusVariant>(); ++i) {
        value = value.value<QDBusVariant>().variant();
    }
    return value;
}

std::optional<PortalGroups> groupsOf(const QDBusMessage& reply) {
    if (reply.type() != QDBusMessage::ReplyMessage || reply.signature() != QStringLiteral("a{sa{sv}}")) {
        return std::nullopt;
    }
    auto groups = qdbus_cast<PortalGroups>(reply.arguments().constFirst());
    for (QVariantMap& group : groups) {
        for (QVariant& value : group) {
            value = unwrapped(value);
        }
    }
    return groups;
}

// Without one, the bus library would start a bus for us alone.
bool sessionHasBus() {
    return !qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS") ||
           QFileInfo::exists(qEnvironmentVariable("XDG_RUNTIME_DIR") + QStringLiteral("/bus"));
}

QString newConnectionName() {
    static std::atomic<int> count = 0;
    return QStringLiteral("pelloran-settings-%1").arg(++count);
}

} // namespace

PortalSettings::PortalSettings(const QString& busAddress, std::chrono::milliseconds portalPatience)
    : connectionName(newConnectionName())
    , patience(portalPatience)
    , bus(connectionName) {
    connecting = std::thread([this, busAddress, name = connectionName] {
        if (!busAddress.isEmpty() || sessionHasBus()) {
            made = busAddress.isEmpty() ? QDBusConnection::connectToBus(QDBusConnection::SessionBus, name)
                                        : QDBusConnection::connectToBus(busAddress, name);
        }
        QMetaObject::invokeMethod(this, "connectingEnded", Qt::QueuedConnection);
    });
}

PortalSettings::~PortalSettings() {
    if (connecting.joinable()) {
        connecting.join();
    }
    bus = QDBusConnection(QString());
    QDBusConnection::disconnectFromBus(connectionName);
}

void PortalSettings::connectingEnded() {
    connecting.join(); // it has nothing left to do
    if (!made) {
        Q_EMIT answered(std::nullopt);
        return;
    }
    bus = *std::exchange(made, std::nullopt);
    if (!bus.isConnected()) {
        Q_EMIT answered(std::nullopt);
        return;
    }
    // Qt looks up a slot's parameters by their names, and knows these only once they have been used.
    qRegisterMetaType<QDBusVariant>();
    qRegisterMetaType<QDBusMessage>();
    // From any sender: with a name, Qt would ask the bus at once who has it, and wait for the answer.
    bus.connect(QString(), path, interface, QStringLiteral("SettingChanged"), this,
                SLOT(settingChanged(QString, QString, QDBusVariant, QDBusMessage)));
    bus.connect(QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
                QStringLiteral("org.freedesktop.DBus"), QStringLiteral("NameOwnerChanged"), {service}, QString(), this,
                SLOT(ownerChanged(QString, QString, QString)));
    readAll();
}

void PortalSettings::readAll() {
    auto message = QDBusMessage::createMethodCall(service, path, interface, QStringLiteral("ReadAll"));
    message << QStringList{appearanceGroup, gnomeGroup, kdeGroup};
    asking = true;
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(message, static_cast<int>(patience.count())), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        watcher->deleteLater();
        asking = false;
        const QDBusMessage reply = watcher->reply();
        const auto groups = groupsOf(reply);
        portal = groups ? reply.service() : QString();
        Q_EMIT answered(groups);
    });
}

void PortalSettings::settingChanged(const QString& group, const QString& key, const QDBusVariant& value,
                                    const QDBusMessage& message) {
    if (message.service() == portal) {
        Q_EMIT changed(group, key, unwrapped(value.variant()));
    } else if (portal.isEmpty() && !asking) {
        readAll(); // it was too slow to answer, and is there after all
    }
}

void PortalSettings::ownerChanged(const QString&, const QString&, const QString& now) {
    // A portal that dies is asked for once, which may start it again. One that never answered is not: it would be
    // started to die for ever.
    const bool hadAnswered = !portal.isEmpty();
    portal.clear();
    if (!asking && (hadAnswered || !now.isEmpty())) {
        readAll();
    }
}

} // namespace pelloran::freedesktop
