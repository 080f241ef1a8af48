#pragma once

#include <QDesktopServices>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QUrl>

#include <vector>

namespace pelloran::testing {

// Stands in for the desktop, which is not to open anything during a test.
class UrlHandler final : public QObject {
    Q_OBJECT

public:
    UrlHandler() {
        for (const QString& scheme : schemes) {
            QDesktopServices::setUrlHandler(scheme, this, "take");
        }
    }

    ~UrlHandler() override {
        for (const QString& scheme : schemes) {
            QDesktopServices::unsetUrlHandler(scheme);
        }
    }

    std::vector<QUrl> opened;

public Q_SLOTS:

    void take(const QUrl& link) { opened.push_back(link); }

private:
    const QStringList schemes{QStringLiteral("http"), QStringLiteral("https"), QStringLiteral("file")};
};

} // namespace pelloran::testing
