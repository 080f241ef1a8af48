#include "tests/platform/freedesktop/FakePortal.h"

#include "tests/platform/freedesktop/Patience.h"

#include <QDBusMetaType>
#include <QStandardPaths>

#include <sys/prctl.h>

#include <csignal>
#include <utility>

namespace pelloran::testing {

namespace {

const QString daemonProgram = QStringLiteral("dbus-daemon");
const QString path = QStringLiteral("/org/freedesktop/portal/desktop");
const QString interface = QStringLiteral("org.freedesktop.portal.Settings");

} // namespace

bool PrivateBus::isInstalled() {
    return !QStandardPaths::findExecutable(daemonProgram).isEmpty();
}

std::unique_ptr<PrivateBus> PrivateBus::start() {
    auto bus = std::make_unique<PrivateBus>();
    bus->daemon.setChildProcessModifier([] { prctl(PR_SET_PDEATHSIG, SIGKILL); });
    bus->daemon.setStandardErrorFile(QProcess::nullDevice());
    bus->daemon.start(daemonProgram,
                      {QStringLiteral("--session"), QStringLiteral("--nofork"), QStringLiteral("--print-address")});
    if (!bus->daemon.waitForReadyRead(desktopPatience)) {
        return nullptr;
    }
    bus->busAddress = QString::fromLatin1(bus->daemon.readLine().trimmed());
    return bus;
}

PrivateBus::~PrivateBus() {
    daemon.kill();
    daemon.waitForFinished(desktopPatience);
}

FakePortal::FakePortal(const QString& busAddress, freedesktop::PortalGroups groups, Manner how)
    : settings(std::move(groups))
    , manner(how)
    , name(QStringLiteral("fake-portal-%1").arg(reinterpret_cast<quintptr>(this)))
    , bus(QDBusConnection::connectToBus(busAddress, name)) {
    qDBusRegisterMetaType<freedesktop::PortalGroups>();
    bus.registerVirtualObject(path, this);
    bus.registerService(QStringLiteral("org.freedesktop.portal.Desktop"));
}

FakePortal::~FakePortal() {
    bus = QDBusConnection(QString());
    QDBusConnection::disconnectFromBus(name);
}

void FakePortal::change(const QString& group, const QString& key, const QVariant& value) {
    settings[group][key] = value;
    emitSignal({group, key, QVariant::fromValue(QDBusVariant(value))});
}

void FakePortal::emitSignal(const QVariantList& arguments) {
    auto signal = QDBusMessage::createSignal(path, interface, QStringLiteral("SettingChanged"));
    signal.setArguments(arguments);
    bus.send(signal);
}

QString FakePortal::introspect(const QString&) const {
    return {};
}

bool FakePortal::handleMessage(const QDBusMessage& message, const QDBusConnection& connection) {
    if (message.interface() != interface || message.member() != QStringLiteral("ReadAll")) {
        return false;
    }
    ++questions;
    askedFor = message.arguments().value(0).toStringList();
    switch (manner) {
    case Manner::answers:
        connection.send(message.createReply(QVariant::fromValue(settings)));
        break;
    case Manner::refuses:
        connection.send(message.createErrorReply(QDBusError::AccessDenied, QStringLiteral("no")));
        break;
    case Manner::isSilent:
        message.setDelayedReply(true);
        break;
    case Manner::talksNonsense:
        connection.send(message.createReply(QVariantMap{{QStringLiteral("color-scheme"), 1U}}));
        break;
    }
    return true;
}

} // namespace pelloran::testing
