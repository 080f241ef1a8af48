#include "tools/stage/painting/Art.h"

#include "tools/stage/painting/Emblems.h"
#include "tools/stage/painting/Materials.h"

#include <QLinearGradient>
#include <QPainter>
#include <QRadialGradient>

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <numbers>

namespace pelloran::stage {

namespace {

enum class Motif { tongues, shards, bolts, rays, spiral, leaves };

struct Palette {
    QColor high;  // top of the sky
    QColor low;   // horizon
    QColor glow;  // source of light
    QColor earth; // silhouettes
    Motif motif;
};

const Palette fire{QColor(0x2a, 0x0a, 0x12), QColor(0xc2, 0x3c, 0x12), QColor(0xff, 0xc8, 0x50),
                   QColor(0x1d, 0x07, 0x08), Motif::tongues};
const Palette frost{QColor(0x0c, 0x1c, 0x48), QColor(0x4f, 0x9f, 0xd6), QColor(0xd6, 0xf4, 0xff),
                    QColor(0x0a, 0x1a, 0x36), Motif::shards};
const Palette storm{QColor(0x10, 0x14, 0x3a), QColor(0x3c, 0x5c, 0xa8), QColor(0xb4, 0xe2, 0xff),
                    QColor(0x0a, 0x0e, 0x26), Motif::bolts};
const Palette holy{QColor(0x5a, 0x3c, 0x14), QColor(0xe0, 0xa8, 0x48), QColor(0xff, 0xf2, 0xc0),
                   QColor(0x34, 0x20, 0x0c), Motif::rays};
const Palette shadow{QColor(0x12, 0x06, 0x20), QColor(0x5c, 0x22, 0x86), QColor(0xd8, 0x78, 0xff),
                     QColor(0x0c, 0x04, 0x14), Motif::spiral};
const Palette arcane{QColor(0x16, 0x0c, 0x46), QColor(0x6c, 0x3c, 0xc8), QColor(0x9c, 0xd8, 0xff),
                     QColor(0x10, 0x08, 0x2c), Motif::spiral};
const Palette wild{QColor(0x08, 0x26, 0x20), QColor(0x4c, 0x8c, 0x34), QColor(0xe6, 0xf2, 0x88),
                   QColor(0x06, 0x18, 0x10), Motif::leaves};
const Palette fel{QColor(0x06, 0x1e, 0x16), QColor(0x2c, 0x96, 0x2c), QColor(0xc4, 0xff, 0x60),
                  QColor(0x04, 0x12, 0x0c), Motif::spiral};
const Palette blood{QColor(0x1c, 0x06, 0x0a), QColor(0x9a, 0x20, 0x1c), QColor(0xff, 0x94, 0x60),
                    QColor(0x16, 0x04, 0x06), Motif::rays};
const Palette dusk{QColor(0x24, 0x1c, 0x4a), QColor(0xd0, 0x70, 0x50), QColor(0xff, 0xdc, 0x98),
                   QColor(0x1a, 0x12, 0x24), Motif::rays};
const Palette sea{QColor(0x08, 0x24, 0x40), QColor(0x2c, 0x90, 0x98), QColor(0xc8, 0xff, 0xe8),
                  QColor(0x06, 0x18, 0x2a), Motif::spiral};

const Palette& paletteOfClass(const QString& classKey) {
    static const QHash<QString, const Palette*> all{
        {QStringLiteral("MAGE"), &arcane},     {QStringLiteral("PALADIN"), &holy},
        {QStringLiteral("PRIEST"), &holy},     {QStringLiteral("ROGUE"), &dusk},
        {QStringLiteral("SHAMAN"), &storm},    {QStringLiteral("WARLOCK"), &shadow},
        {QStringLiteral("WARRIOR"), &blood},   {QStringLiteral("HUNTER"), &wild},
        {QStringLiteral("DRUID"), &wild},      {QStringLiteral("DEATHKNIGHT"), &frost},
        {QStringLiteral("DEMONHUNTER"), &fel},
    };
    return *all.value(classKey, &dusk);
}

// A card's name says more about its colours than its class does.
const Palette& paletteOf(const Card& card, Random& random) {
    struct Hint {
        QStringView word;
        const Palette* palette;
    };

    static constexpr std::array<Hint, 26> hints{{
        {u"Fire", &fire},     {u"Flame", &fire},      {u"Pyro", &fire},     {u"Lava", &fire},   {u"Magma", &fire},
        {u"Hell", &fire},     {u"Explo", &fire},      {u"Soulfire", &fire}, {u"Frost", &frost}, {u"Ice", &frost},
        {u"Cold", &frost},    {u"Blizzard", &frost},  {u"Chill", &frost},   {u"Water", &sea},   {u"Sea", &sea},
        {u"Murloc", &sea},    {u"Lightning", &storm}, {u"Storm", &storm},   {u"Holy", &holy},   {u"Light", &holy},
        {u"Shadow", &shadow}, {u"Void", &shadow},     {u"Wild", &wild},     {u"Wolf", &wild},   {u"Blood", &blood},
        {u"Arcan", &arcane},
    }};
    for (const Hint& hint : hints) {
        if (card.name.english.contains(hint.word)) {
            return *hint.palette;
        }
    }
    if (card.cardClass != u"NEUTRAL") {
        return paletteOfClass(card.cardClass);
    }
    static constexpr std::array<const Palette*, 7> common{&dusk, &sea, &wild, &arcane, &blood, &frost, &holy};
    return *common[random() % common.size()];
}

quint32 seedOf(const QString& id, quint32 seed) {
    quint32 hash = 2166136261U ^ seed;
    for (const QChar c : id) {
        hash = (hash ^ c.unicode()) * 16777619U;
    }
    return hash;
}

// One picture in the making. Lengths are fractions of the picture's height.
class Picture {
public:
    Picture(QSize size, const Palette& colours, quint32 seed)
        : image(size, QImage::Format_ARGB32_Premultiplied)
        , painter(&image)
        , palette(colours)
        , random(seed)
        , noiseSeed(seed)
        , w(size.width())
        , h(size.height()) {
        painter.setRenderHint(QPainter::Antialiasing);
    }

    void sky(QPointF light, double strength) {
        QLinearGradient gradient(0, 0, 0, h);
        gradient.setColorAt(0, palette.high);
        gradient.setColorAt(0.75, palette.low);
        gradient.setColorAt(1, shade(palette.low, 0.7));
        painter.fillRect(image.rect(), gradient);
        clouds();
        halo(light, 0.85, 0.55 * strength);
        halo(light, 0.34, 0.9 * strength);
    }

    void halo(QPointF centre, double radius, double strength) {
        QRadialGradient glow(at(centre), radius * h);
        glow.setColorAt(0, withAlpha(mix(palette.glow, Qt::white, 0.5), strength));
        glow.setColorAt(0.25, withAlpha(palette.glow, strength * 0.55));
        glow.setColorAt(1, withAlpha(palette.glow, 0));
        additive();
        painter.fillRect(image.rect(), glow);
        normal();
    }

    void ridges(int count, double highest) {
        for (int i = 0; i < count; ++i) {
            const double depth = static_cast<double>(i + 1) / count;
            const double base = highest + (0.98 - highest) * depth;
            QPolygonF outline;
            outline << QPointF(0, h);
            for (int x = 0; x <= 60; ++x) {
                const double rough = cloudNoise(x / (18.0 - 6 * depth) + 40 * i, 0.5, 4, noiseSeed + 77);
                outline << QPointF(w * x / 60, h * (base - 0.38 * (rough - 0.35) * (1.25 - depth)));
            }
            outline << QPointF(w, h);
            QPainterPath ridge;
            ridge.addPolygon(outline);
            painter.fillPath(ridge, mix(palette.low, palette.earth, 0.25 + 0.75 * depth));
        }
    }

    // Head and shoulders against the light, with a different headdress each time and eyes that glow.
    void figure(bool grand) {
        const double x = w * between(random, 0.46, 0.54);
        const double head = h * between(random, 0.125, 0.155);
        const double y = h * 0.46;
        QPainterPath body;
        body.setFillRule(Qt::WindingFill);
        const double shoulders = h * between(random, 0.34, 0.5);
        body.moveTo(x - shoulders, h * 1.05);
        body.cubicTo(x - shoulders, h * 0.72, x - head * 1.3, h * 0.72, x - head * 0.62, y + head * 0.7);
        body.lineTo(x + head * 0.62, y + head * 0.7);
        body.cubicTo(x + head * 1.3, h * 0.72, x + shoulders, h * 0.72, x + shoulders, h * 1.05);
        body.closeSubpath();
        body.addEllipse(QPointF(x, y), head * 0.86, head * 1.08);
        body = body.united(headdress(x, y, head));
        if (grand) {
            wings(x, y, head);
        }
        painter.strokePath(body, QPen(withAlpha(palette.glow, 0.25), h * 0.06));
        painter.strokePath(body, QPen(withAlpha(mix(palette.glow, Qt::white, 0.3), 0.75), h * 0.018));
        QLinearGradient gradient(0, y - head * 2, 0, h);
        gradient.setColorAt(0, mix(palette.earth, palette.low, 0.35));
        gradient.setColorAt(1, palette.earth);
        painter.fillPath(body, gradient);
        eyes(x, y, head);
    }

    void power() {
        const QPointF centre(between(random, 0.44, 0.56), between(random, 0.44, 0.56));
        switch (palette.motif) {
        case Motif::tongues:
            tongues();
            break;
        case Motif::shards:
            shards(centre);
            break;
        case Motif::bolts:
            bolts(centre);
            break;
        case Motif::rays:
            rays(centre);
            break;
        case Motif::spiral:
            spiral(centre);
            break;
        case Motif::leaves:
            spiral(centre);
            leaves(centre);
            break;
        }
        halo(centre, 0.3, 0.75);
    }

    void blade() {
        rays({0.5, 0.5});
        QTransform placed;
        placed.translate(w * 0.5, h * 0.5);
        placed.rotate(between(random, 32, 52));
        placed.scale(h * 0.52, h * 0.52);
        const QPainterPath shape = placed.map(sword(between(random, 0.1, 0.19)));
        castShadow(painter, shape, h * 0.06, 0.7);
        painter.fillPath(shape, metal(shape.boundingRect(), mix(steel, palette.glow, 0.3)));
        painter.strokePath(shape, QPen(withAlpha(palette.glow, 0.9), h * 0.008));
    }

    void sparks(int count, double largest = 0.016) {
        additive();
        painter.setPen(Qt::NoPen);
        for (int i = 0; i < count; ++i) {
            const QPointF centre(between(random, 0, w), between(random, 0, h));
            const double radius = h * between(random, largest / 4, largest);
            QRadialGradient spark(centre, radius * 2.4);
            spark.setColorAt(0, withAlpha(mix(palette.glow, Qt::white, 0.6), 0.9));
            spark.setColorAt(1, withAlpha(palette.glow, 0));
            painter.setBrush(spark);
            painter.drawEllipse(centre, radius * 2.4, radius * 2.4);
        }
        normal();
    }

    // Uneven light, as of a brush, and dark corners.
    QImage finished() {
        painter.setCompositionMode(QPainter::CompositionMode_Overlay);
        painter.setOpacity(0.35);
        painter.drawImage(0, 0, mottled(image.size(), QColor(128, 128, 128), 0.9, h / 300.0, noiseSeed + 5));
        painter.setOpacity(1);
        normal();
        QRadialGradient corners(w * 0.5, h * 0.45, std::hypot(w, h) * 0.56);
        corners.setColorAt(0.45, QColor(0, 0, 0, 0));
        corners.setColorAt(1, QColor(0, 0, 0, 190));
        painter.fillRect(image.rect(), corners);
        painter.end();
        return image;
    }

private:
    QPointF at(QPointF fraction) const { return {fraction.x() * w, fraction.y() * h}; }

    void additive() { painter.setCompositionMode(QPainter::CompositionMode_Plus); }

    void normal() { painter.setCompositionMode(QPainter::CompositionMode_SourceOver); }

    void clouds() {
        constexpr int width = 96;
        QImage sheet(width, 72, QImage::Format_ARGB32_Premultiplied);
        for (int y = 0; y < sheet.height(); ++y) {
            auto* line = reinterpret_cast<QRgb*>(sheet.scanLine(y));
            for (int x = 0; x < width; ++x) {
                const double swirl = cloudNoise(x / 30.0, y / 30.0, 2, noiseSeed + 21) * 2;
                const double dense = cloudNoise(x / 22.0 + swirl, y / 11.0 + swirl, 4, noiseSeed + 31);
                const double alpha = std::clamp((dense - 0.46) * 2.4, 0.0, 0.75);
                const QColor colour = mix(palette.low, palette.glow, 0.45);
                line[x] =
                    qPremultiply(qRgba(colour.red(), colour.green(), colour.blue(), static_cast<int>(alpha * 255)));
            }
        }
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        painter.drawImage(QRectF(0, 0, w, h), sheet);
    }

    QPainterPath headdress(double x, double y, double r) {
        QPainterPath path;
        path.setFillRule(Qt::WindingFill);
        switch (random() % 6) {
        case 0: // hood
            path.moveTo(x, y - r * 2.1);
            path.cubicTo(x + r * 1.5, y - r * 1.3, x + r * 1.5, y + r * 0.6, x + r * 1.1, y + r * 1.3);
            path.lineTo(x - r * 1.1, y + r * 1.3);
            path.cubicTo(x - r * 1.5, y + r * 0.6, x - r * 1.5, y - r * 1.3, x, y - r * 2.1);
            break;
        case 1: // horns
            for (const double side : {-1.0, 1.0}) {
                path.moveTo(x + side * r * 0.45, y - r * 0.75);
                path.cubicTo(x + side * r * 1.5, y - r * 0.9, x + side * r * 1.9, y - r * 1.5, x + side * r * 1.5,
                             y - r * 2.3);
                path.cubicTo(x + side * r * 1.45, y - r * 1.6, x + side * r * 1.2, y - r * 1.3, x + side * r * 0.2,
                             y - r * 1.0);
            }
            break;
        case 2: // helmet with a crest
            path.addRoundedRect(QRectF(x - r, y - r * 1.15, 2 * r, r * 1.9), r * 0.8, r * 0.8);
            path.moveTo(x - r * 0.2, y - r * 1.0);
            path.cubicTo(x - r * 0.3, y - r * 2.2, x + r * 0.9, y - r * 2.3, x + r * 1.7, y - r * 1.2);
            path.cubicTo(x + r * 1.0, y - r * 1.5, x + r * 0.6, y - r * 1.4, x + r * 0.4, y - r * 0.9);
            break;
        case 3: // long ears
            for (const double side : {-1.0, 1.0}) {
                path.moveTo(x + side * r * 0.7, y - r * 0.3);
                path.lineTo(x + side * r * 2.1, y - r * 1.0);
                path.lineTo(x + side * r * 0.75, y + r * 0.25);
            }
            break;
        case 4: // beast's ears and muzzle
            for (const double side : {-1.0, 1.0}) {
                path.moveTo(x + side * r * 0.2, y - r * 0.8);
                path.lineTo(x + side * r * 0.95, y - r * 1.9);
                path.lineTo(x + side * r * 1.0, y - r * 0.2);
            }
            path.addEllipse(QPointF(x, y + r * 0.75), r * 0.55, r * 0.6);
            path.addEllipse(QPointF(x, y), r * 1.1, r * 0.95);
            break;
        default: // crown
            path.moveTo(x - r * 0.9, y - r * 0.6);
            for (int i = 0; i < 5; ++i) {
                path.lineTo(x - r * 0.9 + r * 0.45 * i, y - r * (i % 2 == 0 ? 1.7 : 1.1) - (i == 2 ? r * 0.3 : 0));
            }
            path.lineTo(x + r * 0.9, y - r * 0.6);
            break;
        }
        path.closeSubpath();
        return path;
    }

    void wings(double x, double y, double r) {
        for (const double side : {-1.0, 1.0}) {
            QPainterPath wing;
            wing.moveTo(x + side * r * 0.8, h * 0.85);
            wing.cubicTo(x + side * r * 1.2, y, x + side * r * 1.6, y - r * 2.4, x + side * r * 3.6, y - r * 2.6);
            wing.cubicTo(x + side * r * 3.0, y - r * 1.4, x + side * r * 4.2, y - r * 1.0, x + side * r * 4.4,
                         y - r * 0.2);
            wing.cubicTo(x + side * r * 3.2, y - r * 0.2, x + side * r * 3.6, y + r * 0.9, x + side * r * 3.4,
                         y + r * 1.4);
            wing.cubicTo(x + side * r * 2.4, y + r * 0.9, x + side * r * 2.0, y + r * 1.8, x + side * r * 0.8,
                         h * 0.85);
            painter.fillPath(wing, mix(palette.earth, palette.low, 0.45));
            painter.strokePath(wing, QPen(withAlpha(palette.glow, 0.6), h * 0.012));
        }
    }

    void eyes(double x, double y, double r) {
        additive();
        for (const double side : {-1.0, 1.0}) {
            const QPointF eye(x + side * r * 0.36, y - r * 0.02);
            QRadialGradient glow(eye, r * 0.5);
            glow.setColorAt(0, withAlpha(mix(palette.glow, Qt::white, 0.6), 1));
            glow.setColorAt(0.3, withAlpha(palette.glow, 0.7));
            glow.setColorAt(1, withAlpha(palette.glow, 0));
            painter.setPen(Qt::NoPen);
            painter.setBrush(glow);
            painter.drawEllipse(eye, r * 0.5, r * 0.32);
        }
        normal();
    }

    void spiral(QPointF centre) {
        additive();
        painter.setBrush(Qt::NoBrush);
        const double turn = random() % 2 == 0 ? 1 : -1;
        for (int arm = 0; arm < 46; ++arm) {
            const double start = between(random, 0, 2 * std::numbers::pi);
            const double begin = between(random, 0.05, 0.5);
            QPolygonF line;
            for (int i = 0; i < 22; ++i) {
                const double radius = h * (begin + i * 0.012);
                const double angle = start + turn * i * 0.11;
                line << at(centre) + QPointF(radius * std::cos(angle) * 1.15, radius * std::sin(angle) * 0.85);
            }
            const QColor colour = mix(palette.glow, palette.low, between(random, 0, 1));
            painter.setPen(QPen(withAlpha(colour, between(random, 0.08, 0.4)), h * between(random, 0.004, 0.03),
                                Qt::SolidLine, Qt::RoundCap));
            painter.drawPolyline(line);
        }
        normal();
    }

    void rays(QPointF centre) {
        additive();
        painter.setPen(Qt::NoPen);
        for (int i = 0; i < 26; ++i) {
            const double angle = between(random, 0, 2 * std::numbers::pi);
            const double spread = between(random, 0.015, 0.07);
            const double reach = h * between(random, 0.5, 1.3);
            QRadialGradient fade(at(centre), reach);
            fade.setColorAt(0, withAlpha(palette.glow, between(random, 0.2, 0.5)));
            fade.setColorAt(1, withAlpha(palette.glow, 0));
            painter.setBrush(fade);
            painter.drawPolygon(
                QPolygonF{at(centre), at(centre) + QPointF(std::cos(angle - spread), std::sin(angle - spread)) * reach,
                          at(centre) + QPointF(std::cos(angle + spread), std::sin(angle + spread)) * reach});
        }
        normal();
    }

    void tongues() {
        additive();
        painter.setPen(Qt::NoPen);
        for (int i = 0; i < 34; ++i) {
            const double x = w * between(random, 0.02, 0.98);
            const double foot = h * between(random, 0.75, 1.1);
            const double tall = h * between(random, 0.25, 0.8) * (1 - 0.9 * std::abs(x / w - 0.5));
            const double wide = h * between(random, 0.03, 0.1);
            const double lean = h * between(random, -0.12, 0.12);
            QPainterPath tongue;
            tongue.moveTo(x - wide, foot);
            tongue.cubicTo(x - wide * 1.6, foot - tall * 0.5, x + lean, foot - tall * 0.5, x + lean, foot - tall);
            tongue.cubicTo(x + lean * 0.5 + wide, foot - tall * 0.6, x + wide * 1.7, foot - tall * 0.4, x + wide, foot);
            QLinearGradient heat(0, foot, 0, foot - tall);
            heat.setColorAt(0, withAlpha(palette.glow, 0.22));
            heat.setColorAt(0.45, withAlpha(palette.low, 0.4));
            heat.setColorAt(1, withAlpha(palette.low, 0));
            painter.fillPath(tongue, heat);
        }
        normal();
    }

    void shards(QPointF centre) {
        for (int i = 0; i < 22; ++i) {
            const double angle = between(random, 0, 2 * std::numbers::pi);
            const double from = h * between(random, 0.02, 0.2);
            const double to = from + h * between(random, 0.15, 0.55);
            const QPointF along(std::cos(angle), std::sin(angle));
            const QPointF across = QPointF(-along.y(), along.x()) * h * between(random, 0.012, 0.045);
            const QPointF tail = at(centre) + along * from;
            const QPointF waist = at(centre) + along * (from + (to - from) * 0.7);
            const QPointF tip = at(centre) + along * to;
            painter.setPen(QPen(withAlpha(Qt::white, 0.5), h * 0.004));
            painter.setBrush(withAlpha(mix(palette.low, palette.glow, between(random, 0.2, 0.7)), 0.75));
            painter.drawPolygon(QPolygonF{tail, waist + across, tip});
            painter.setBrush(withAlpha(mix(palette.low, palette.high, between(random, 0, 0.5)), 0.75));
            painter.drawPolygon(QPolygonF{tail, waist - across, tip});
        }
    }

    void bolts(QPointF centre) {
        additive();
        painter.setBrush(Qt::NoBrush);
        for (int i = 0; i < 9; ++i) {
            QPolygonF line{at(centre)};
            double angle = between(random, 0, 2 * std::numbers::pi);
            for (int piece = 0; piece < 9; ++piece) {
                const double bend = angle + between(random, -0.7, 0.7);
                line << line.last() + QPointF(std::cos(bend), std::sin(bend)) * h * between(random, 0.04, 0.1);
            }
            for (const auto& [width, alpha] :
                 {std::pair(0.035, 0.12), std::pair(0.014, 0.35), std::pair(0.005, 0.95)}) {
                painter.setPen(
                    QPen(withAlpha(palette.glow, alpha), h * width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
                painter.drawPolyline(line);
            }
        }
        normal();
    }

    void leaves(QPointF centre) {
        for (int i = 0; i < 30; ++i) {
            const double angle = between(random, 0, 2 * std::numbers::pi);
            const double radius = h * between(random, 0.12, 0.6);
            QTransform placed;
            placed.translate(at(centre).x() + radius * std::cos(angle), at(centre).y() + radius * std::sin(angle));
            placed.rotate(angle * 180 / std::numbers::pi + between(random, 40, 110));
            placed.scale(h * 0.05, h * 0.05);
            QPainterPath leaf;
            leaf.moveTo(0, -1);
            leaf.cubicTo(0.8, -0.4, 0.6, 0.5, 0, 1);
            leaf.cubicTo(-0.6, 0.5, -0.8, -0.4, 0, -1);
            painter.fillPath(placed.map(leaf),
                             withAlpha(mix(palette.low, palette.glow, between(random, 0, 0.7)), 0.85));
        }
    }

    QImage image;
    QPainter painter;
    Palette palette;
    Random random;
    quint32 noiseSeed;
    double w;
    double h;
};

} // namespace

QImage paintCardArt(const Card& card, QSize size, quint32 seed) {
    const quint32 own = seedOf(card.id, seed);
    Random random(own);
    Picture picture(size, paletteOf(card, random), own);
    const bool isFigure = card.type == u"MINION" || card.type == u"HERO";
    picture.sky({between(random, 0.3, 0.7), isFigure ? between(random, 0.3, 0.5) : 0.5}, isFigure ? 1.0 : 0.45);
    if (isFigure) {
        picture.ridges(3, 0.55);
        picture.figure(card.rarity == u"LEGENDARY");
    } else if (card.type == u"WEAPON") {
        picture.blade();
    } else {
        picture.power();
    }
    picture.sparks(isFigure ? 14 : 34);
    return picture.finished();
}

QImage paintClassArt(const QString& classKey, QSize size, quint32 seed) {
    const quint32 own = seedOf(classKey, seed);
    Picture picture(size, paletteOfClass(classKey), own);
    picture.sky({0.5, 0.45}, 0.5);
    picture.ridges(3, 0.68);
    picture.power();
    picture.sparks(40);
    return picture.finished();
}

QImage paintValley(QSize size, quint32 seed) {
    Picture picture(size, dusk, seed + 101);
    picture.sky({0.5, 0.52}, 1);
    picture.ridges(5, 0.5);
    picture.sparks(70, 0.004);
    return picture.finished();
}

} // namespace pelloran::stage
