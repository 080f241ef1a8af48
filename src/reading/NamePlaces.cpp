#include "reading/NamePlaces.h"

#include <algorithm>

namespace pelloran {

GameFrame frameOf(const QSize& window) {
    return {std::min(double(window.height()), window.width() * 0.75), window.width() / 2.0, 0};
}

} // namespace pelloran
