#include "platform/GuiSession.h"

namespace pelloran::GuiSession {

std::expected<void, QString> prepare() {
    return {};
}

} // namespace pelloran::GuiSession
