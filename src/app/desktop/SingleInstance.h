#pragma once

#include <QLocalServer>
#include <QLockFile>
#include <QObject>
#include <QString>
#include <QTimer>

#include <chrono>
#include <optional>

namespace pelloran {

// Keeps the program from running twice for one user on one display: a second start asks the first to come forward.
// Whoever holds the lock file is the first; the socket beside it carries the request. Both outlive a crash without
// harm. Main thread.
class SingleInstance final : public QObject {
    Q_OBJECT

public:
    enum class Outcome {
        first,       // go on
        handedOver,  // the first has come forward: end
        firstSilent, // there is a first, and it does not answer
        unavailable, // the files cannot be made; go on, as nobody can be told
    };

    // How long a second start waits for the first.
    static constexpr std::chrono::milliseconds patience{3'000};

    // `folder` exists and is the user's own, or is empty where there is none; `name` is that of both files, without
    // their extensions.
    SingleInstance(const QString& folder, const QString& name);
    ~SingleInstance() override;

    // How often a first one looks whether other starts can still reach it. Set before begin().
    std::chrono::milliseconds checkInterval{5'000};

    // Blocks for `wait` at most.
    Outcome begin(std::chrono::milliseconds wait = patience);

    // The next start will be a first one.
    void end();

    // The one that runs already.
    struct Running {
        qint64 process = 0;
        bool answers = false; // within the time for it

        bool operator==(const Running&) const = default;
    };

    // For whoever only looks: nothing is made, and no panel comes forward. Absent where none runs.
    std::optional<Running> running(std::chrono::milliseconds wait = patience) const;

Q_SIGNALS:
    // Another start asks this one to come forward; from the event loop.
    void reopenRequested();

private:
    bool listen();
    void listenAgain();
    bool answersAtAll(std::chrono::milliseconds wait) const;
    bool askFirst(std::chrono::milliseconds wait) const;
    void answer(QLocalSocket& asking);

    bool usable;
    QString socketPath;
    QLockFile lock;
    QLocalServer server;
    QTimer listeningTimer;
};

// The same for every way to write one X display: the number of the screen and the way there do not matter.
QString instanceName(const QString& display);

} // namespace pelloran
