#include "platform/Browser.h"

#include <QDesktopServices>

namespace pelloran {

namespace {

class DesktopBrowser final : public Browser {
private:
    bool openWebLink(const QUrl& link) override { return QDesktopServices::openUrl(link); }
};

} // namespace

std::unique_ptr<Browser> Browser::create() {
    return std::make_unique<DesktopBrowser>();
}

} // namespace pelloran
