#include "overlay/OverlayPanel/views/FontCache.h"

#include <QFontDatabase>
#include <QFontInfo>
#include <QStringList>

#include <cmath>

namespace pelloran {

namespace {

// The desktop's own font, then fonts with the simplified Chinese forms of characters: left to itself a system often
// falls back to the Japanese ones.
QStringList families() {
    QString general = QFontInfo(QFontDatabase::systemFont(QFontDatabase::GeneralFont)).family();
    general.replace(QStringLiteral("CJK JP"), QStringLiteral("CJK SC"));
    return {general, QStringLiteral("PingFang SC"), QStringLiteral("Noto Sans CJK SC"),
            QStringLiteral("Source Han Sans SC"), QStringLiteral("WenQuanYi Micro Hei")};
}

} // namespace

FontCache& FontCache::shared() {
    static FontCache cache;
    return cache;
}

QFont FontCache::font(double size, QFont::Weight weight) {
    if (!std::isfinite(size)) {
        qFatal("a font of no size was asked for");
    }
    const Key key{static_cast<int>(std::lround(size * 2)), weight};
    const auto known = map.find(key);
    if (known != map.end()) {
        return known->second;
    }
    static const QStringList names = families();
    QFont font(names);
    font.setPixelSize(static_cast<int>(std::lround(key.size / 2.0)));
    font.setWeight(weight);
    map.emplace(key, font);
    return font;
}

} // namespace pelloran
