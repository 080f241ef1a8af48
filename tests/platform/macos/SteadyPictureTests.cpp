#include "platform/macos/SteadyPicture.h"

#include <gtest/gtest.h>

#include <string>

namespace pelloran::macos {

namespace {

struct Window {
    double width;
    double height;
};

std::string kindOf(const std::expected<QImage, WindowImageError>& picture) {
    if (picture) {
        return picture->isNull() ? "empty" : "picture";
    }

    struct Kind {
        std::string operator()(const WindowGone&) const { return "gone"; }

        std::string operator()(const CaptureDenied&) const { return "denied"; }

        std::string operator()(const WindowServerLost& lost) const { return lost.call; }

        std::string operator()(const WindowServerFailed& failed) const { return failed.call; }
    };

    return std::visit(Kind(), picture.error());
}

TEST(SteadyPicture, IsOfTheWindowAsItStayed) {
    struct Case {
        const char* why;
        std::optional<Window> before;
        std::optional<WindowImageError> error; // absent: a picture of this many pixels
        QSize pixels;
        std::optional<Window> after;
        std::string expected;
        bool taken = true;
    };

    const Window window{1280, 748};
    const WindowImageError failed = WindowServerFailed{"failed", 1};
    const char* const changed = "its size changed while its picture was taken";
    const Case cases[] = {
        {"usual", window, {}, {1280, 748}, window, "picture"},
        {"on a Retina display", window, {}, {2560, 1496}, window, "picture"},
        {"moved between two points", Window{1280.2, 747.9}, {}, {1280, 748}, window, "picture"},
        {"gone before", {}, {}, {1280, 748}, {}, "gone", false},
        {"gone meanwhile, although there is a picture", window, {}, {1280, 748}, {}, "gone"},
        {"gone meanwhile, which fails in some way", window, failed, {}, {}, "gone"},
        {"failed", window, failed, {}, window, "failed"},
        {"denied meanwhile", window, CaptureDenied(), {}, window, "denied"},
        {"larger afterwards", window, {}, {1280, 748}, Window{1300, 760}, changed},
        {"of another size than it said", window, {}, {1300, 748}, window, changed},
        {"no size afterwards", window, {}, {1280, 748}, Window{0, 0}, changed},
        {"unreadable", window, {}, {}, window, "its picture cannot be read"},
        {"of no size", Window{0, 748}, {}, {1280, 748}, window, "empty", false},
        {"of a size that is none", Window{-1, 748}, {}, {1280, 748}, window, "empty", false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        int descriptions = 0;
        std::optional<QSize> askedFor;
        const auto picture = steadyPicture(
            [&]() -> std::optional<WindowDescription> {
                const auto& now = descriptions++ == 0 ? c.before : c.after;
                if (!now) {
                    return std::nullopt;
                }
                WindowDescription description;
                description.bounds = WindowBounds{0, 0, now->width, now->height};
                return description;
            },
            [&](QSize points) -> std::expected<QImage, WindowImageError> {
                askedFor = points;
                if (c.error) {
                    return std::unexpected(*c.error);
                }
                QImage image(c.pixels, QImage::Format_RGB32);
                image.fill(Qt::red);
                return image;
            });
        EXPECT_EQ(kindOf(picture), c.expected);
        EXPECT_EQ(askedFor, c.taken ? std::optional(QSize(1280, 748)) : std::nullopt);
        if (c.expected == "picture") {
            EXPECT_EQ(picture->size(), QSize(1280, 748));
        }
    }
}

} // namespace

} // namespace pelloran::macos
