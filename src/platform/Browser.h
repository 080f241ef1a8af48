#pragma once

#include <QUrl>

#include <memory>

namespace pelloran {

// The user's own program for links. Main thread.
class Browser {
public:
    static std::unique_ptr<Browser> create();

    virtual ~Browser() = default;

    // Hands `link` over and does not wait. False when the desktop found nothing to open it with, or when it is no link
    // to a web server: links come from outside, and a desktop opens files and starts programs just as willingly.
    bool open(const QUrl& link);

    // What open() would hand over.
    static bool isWebLink(const QUrl& link);

private:
    // Gets absolute http and https links only.
    virtual bool openWebLink(const QUrl& link) = 0;
};

} // namespace pelloran
