#pragma once

#include "platform/freedesktop/DesktopPreferences.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QProcess>
#include <QTemporaryDir>

#include <memory>

namespace pelloran::testing {

// A bus of its own for a test. Ends with the object.
class PrivateBus {
public:
    static bool isInstalled();

    // Null when it does not come up.
    static std::unique_ptr<PrivateBus> start();

    ~PrivateBus();

    QString address() const { return busAddress; }

    qint64 processId() const { return daemon.processId(); }

private:
    QProcess daemon;
    QString busAddress;
};

// The desktop's settings on a bus, as far as a test needs them. Ends with the object, as if it had crashed.
class FakePortal final : public QDBusVirtualObject {
public:
    enum class Manner { answers, refuses, isSilent, talksNonsense };

    FakePortal(const QString& busAddress, freedesktop::PortalGroups groups, Manner how = Manner::answers);
    ~FakePortal() override;

    void change(const QString& group, const QString& key, const QVariant& value);
    // Sends any signal of the settings.
    void emitSignal(const QVariantList& arguments);

    // What was asked for, the last time.
    QStringList askedFor;
    int questions = 0;

    QString introspect(const QString& path) const override;
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;

private:
    freedesktop::PortalGroups settings;
    Manner manner;
    QString name;
    QDBusConnection bus;
};

} // namespace pelloran::testing
