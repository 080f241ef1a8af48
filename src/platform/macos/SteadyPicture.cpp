#include "platform/macos/SteadyPicture.h"

#include "platform/macos/BitmapLayout.h"
#include "platform/macos/CaptureErrors.h"
#include "platform/macos/WindowRecord.h"

namespace pelloran::macos {

std::expected<QImage, WindowImageError>
steadyPicture(const std::function<std::optional<WindowDescription>()>& describe,
              const std::function<std::expected<QImage, WindowImageError>(QSize points)>& take) {
    const auto before = describe();
    if (!before) {
        return std::unexpected(WindowGone());
    }
    const auto points = pointsOf(*before);
    if (!points || points->isEmpty()) {
        return QImage();
    }
    auto picture = take(*points);
    const auto after = describe();
    if (!after) {
        return std::unexpected(WindowGone()); // whatever the system made of it
    }
    if (!picture) {
        return picture;
    }
    if (pointsOf(*after) != points) {
        return std::unexpected(sizeChanged());
    }
    if (picture->isNull()) {
        return std::unexpected(WindowServerFailed{"its picture cannot be read", 0});
    }
    QImage image = atNominalSize(*picture, *points);
    if (image.isNull()) {
        return std::unexpected(sizeChanged());
    }
    return image;
}

} // namespace pelloran::macos
