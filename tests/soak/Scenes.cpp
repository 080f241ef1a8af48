#include "tests/soak/Scenes.h"

#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QPainter>

#include <cstdio>
#include <utility>

namespace pelloran::soak {

namespace {

constexpr double moments[frames] = {2.4, 3.7}; // seconds after the start

qint64 bytesOf(const Scene& scene) {
    return qint64{4} * scene.size.width() * scene.size.height();
}

bool write(const QString& path, const QImage& picture) {
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(reinterpret_cast<const char*>(picture.constBits()),
                                                         picture.sizeInBytes()) == picture.sizeInBytes();
}

} // namespace

QString fileOf(const QString& folder, const Scene& scene, int frame) {
    return folder + QStringLiteral("/%1-%2-%3x%4-%5.raw")
                        .arg(scene.draft)
                        .arg(scene.step)
                        .arg(scene.size.width())
                        .arg(scene.size.height())
                        .arg(frame);
}

bool paint(const Season& season, const QString& folder) {
    std::unique_ptr<stage::ScenePainter> painter;
    std::pair<std::size_t, QSize> paints; // the draft and the size that it is for
    for (const Scene& scene : season.scenes()) {
        if (QFileInfo(fileOf(folder, scene, frames - 1)).size() == bytesOf(scene)) {
            continue;
        }
        const Draft& draft = season.drafts[scene.draft];
        if (!painter || paints != std::pair(scene.draft, scene.size)) {
            const auto lettering = stage::Lettering::create(draft.client.production.language, draft.client.lettering);
            if (!lettering) {
                std::fprintf(stderr, "%s\n", qPrintable(lettering.error()));
                return false;
            }
            painter = std::make_unique<stage::ScenePainter>(scene.size, draft.client.production, *lettering);
            paints = {scene.draft, scene.size};
        }
        painter->show(stage::Screen::onStage(stage::situationAt(draft.scenario, scene.step)));
        for (int frame = 0; frame < frames; ++frame) {
            QImage picture(scene.size, QImage::Format_RGB32);
            QPainter canvas(&picture);
            painter->paint(canvas, moments[frame]);
            canvas.end();
            if (!write(fileOf(folder, scene, frame), picture)) {
                std::fprintf(stderr, "cannot write to %s\n", qPrintable(folder));
                return false;
            }
        }
    }
    return true;
}

class Screen::Server final : public WindowServer {
public:
    explicit Server(Screen& toShow)
        : screen(toShow) {}

    std::optional<std::vector<WindowDescription>> describeWindows(WindowListing listing) override {
        const std::scoped_lock lock(screen.mutex);
        std::vector<WindowDescription> all{
            {11, QStringLiteral("panel"), QStringLiteral("Panel"), 25, WindowBounds{0, 0, 1920, 30}},
            {12, QStringLiteral("mail"), QStringLiteral("Letters"), 0, WindowBounds{40, 60, 900, 700}}};
        if (screen.window) {
            const QSize size = screen.window->scene.size;
            all.push_back({screen.window->number, QStringLiteral("hearthstone.exe"), QStringLiteral("Hearthstone"), 0,
                           WindowBounds{0, 30, size.width(), size.height()}});
        }
        if (listing == WindowListing::all) {
            all.push_back({13, QStringLiteral("editor"), QStringLiteral("Notes"), 0, WindowBounds{0, 0, 600, 400}});
        }
        return all;
    }

    std::expected<QImage, WindowImageError> image(std::uint32_t windowId) override {
        const std::scoped_lock lock(screen.mutex);
        if (!screen.window || screen.window->number != windowId) {
            return std::unexpected(WindowGone{});
        }
        const Scene& scene = screen.window->scene;
        QFile file(fileOf(screen.folder, scene, ++screen.looks % frames));
        QImage picture(scene.size, QImage::Format_RGB32);
        if (!file.open(QIODevice::ReadOnly) ||
            file.read(reinterpret_cast<char*>(picture.bits()), picture.sizeInBytes()) != picture.sizeInBytes()) {
            return std::unexpected(WindowServerFailed{"reading " + file.fileName().toStdString(), 0});
        }
        return picture;
    }

    CapturePermission permission() const override { return CapturePermission::granted; }

private:
    Screen& screen;
};

void Screen::openWindow(const Scene& scene) {
    const std::scoped_lock lock(mutex);
    window = {++lastNumber, scene};
}

void Screen::show(const Scene& scene) {
    const std::scoped_lock lock(mutex);
    window->scene = scene;
}

void Screen::closeWindow() {
    const std::scoped_lock lock(mutex);
    window.reset();
}

bool Screen::hasWindow() const {
    const std::scoped_lock lock(mutex);
    return window.has_value();
}

std::unique_ptr<WindowServer> Screen::server() {
    return std::make_unique<Server>(*this);
}

} // namespace pelloran::soak
