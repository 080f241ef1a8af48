#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <vector>

namespace pelloran::testing {

constexpr int patience = 10'000; // milliseconds; for what should be there in a moment

// Asks again and again, without a pause that could be too short, until `condition` holds; false after `milliseconds`.
bool eventually(const std::function<bool()>& condition, int milliseconds = patience);

// An X server without a screen, on a number that was free and that no other test takes afterwards. Ends with the
// object.
class VirtualDisplay {
public:
    // Whether such a server is installed.
    static bool isInstalled();
    static bool isInstalled(const QString& program);

    // `arguments` beyond the usual ones, such as {"-screen", "0", "800x600x16"}. Null when it does not come up.
    static std::unique_ptr<VirtualDisplay> start(const QStringList& arguments = {});

    ~VirtualDisplay();

    // For $DISPLAY.
    QByteArray name() const { return displayName; }

    qint64 processId() const { return server.processId(); }

    // Memory of the server itself, in bytes.
    qint64 residentMemory() const;

    // Starts a window manager or a compositor on this display; false when it does not start. It ends with the display.
    bool startProgram(const QString& program, const QStringList& arguments);
    void stopPrograms();

    void stop();

private:
    bool startServer(int number, const QStringList& arguments);

    QProcess server;
    std::vector<std::unique_ptr<QProcess>> programs;
    QByteArray displayName;
};

} // namespace pelloran::testing
