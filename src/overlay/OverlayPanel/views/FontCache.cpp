#include "overlay/OverlayPanel/views/FontCache.h"

#include <QFontDatabase>
#include <QFontInfo>
#include <QString>

#include <cmath>

namespace pelloran {

FontCache& FontCache::shared() {
    static FontCache cache;
    return cache;
}

QStringList FontCache::withChinese(const QFont& desktops) {
    QString own = QFontInfo(desktops).family();
    own.replace(QStringLiteral("CJK JP"), QStringLiteral("CJK SC"));
    return {own, QStringLiteral("PingFang SC"), QStringLiteral("Noto Sans CJK SC"),
            QStringLiteral("Source Han Sans SC"), QStringLiteral("WenQuanYi Micro Hei")};
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
    static const QStringList names = withChinese(QFontDatabase::systemFont(QFontDatabase::GeneralFont));
    QFont font(names);
    font.setPixelSize(static_cast<int>(std::lround(key.size / 2.0)));
    font.setWeight(weight);
    map.emplace(key, font);
    return font;
}

} // namespace pelloran
