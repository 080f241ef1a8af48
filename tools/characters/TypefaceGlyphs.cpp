#include "tools/characters/TypefaceGlyphs.h"

#include "tools/characters/Degradation.h"

#include <QFile>
#include <QStringDecoder>

#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_SFNT_NAMES_H
#include FT_TRUETYPE_IDS_H

#include <algorithm>

namespace pelloran::characters {

namespace {

// The English one of a font's names.
QString nameOf(FT_Face face, FT_UShort id) {
    for (FT_UInt i = 0; i < FT_Get_Sfnt_Name_Count(face); ++i) {
        FT_SfntName name;
        if (FT_Get_Sfnt_Name(face, i, &name) == 0 && name.name_id == id && name.platform_id == TT_PLATFORM_MICROSOFT &&
            name.language_id == TT_MS_LANGID_ENGLISH_UNITED_STATES) {
            QStringDecoder decoder(QStringDecoder::Utf16BE);
            return decoder(QByteArrayView(name.string, name.string_len));
        }
    }
    return {};
}

// 1.250 of "Version 1.250;tool and date".
QString versionOf(FT_Face face) {
    QString text = nameOf(face, TT_NAME_ID_VERSION_STRING).section(u';', 0, 0).trimmed();
    if (text.startsWith(u"Version ")) {
        text.remove(0, 8);
    }
    return text.isEmpty() ? QStringLiteral("of no version") : text;
}

} // namespace

struct TypefaceGlyphs::Face {
    FT_Library library = nullptr;
    FT_Face face = nullptr;
};

void TypefaceGlyphs::Closer::operator()(Face* open) const {
    if (open->face != nullptr) {
        FT_Done_Face(open->face);
    }
    if (open->library != nullptr) {
        FT_Done_FreeType(open->library);
    }
    delete open;
}

FontFile FontFile::of(const QString& text) {
    bool isNumber = false;
    const int index = text.section(u'#', -1).toInt(&isNumber);
    return text.contains(u'#') && isNumber ? FontFile{text.section(u'#', 0, -2), index} : FontFile{text, 0};
}

std::expected<TypefaceGlyphs, QString> TypefaceGlyphs::open(const FontFile& file) {
    TypefaceGlyphs glyphs;
    glyphs.face.reset(new Face);
    Face& open = *glyphs.face;
    if (FT_Init_FreeType(&open.library) != 0) {
        return std::unexpected(QStringLiteral("FreeType does not start"));
    }
    if (FT_New_Face(open.library, QFile::encodeName(file.path).constData(), file.index, &open.face) != 0) {
        return std::unexpected(QStringLiteral("no font can be read from %1").arg(file.path));
    }
    if (FT_Select_Charmap(open.face, FT_ENCODING_UNICODE) != 0 || FT_Set_Pixel_Sizes(open.face, 0, emSize) != 0) {
        return std::unexpected(QStringLiteral("%1 is no font of outlines for Unicode").arg(file.path));
    }
    glyphs.fullName = nameOf(open.face, TT_NAME_ID_FULL_NAME);
    if (glyphs.fullName.isEmpty()) {
        glyphs.fullName = QString::fromUtf8(open.face->family_name);
    }
    glyphs.versionText = versionOf(open.face);
    return glyphs;
}

std::optional<Plane> TypefaceGlyphs::draw(char32_t character) {
    const FT_UInt glyph = FT_Get_Char_Index(face->face, character);
    if (glyph == 0 || FT_Load_Glyph(face->face, glyph, FT_LOAD_NO_HINTING | FT_LOAD_NO_BITMAP | FT_LOAD_RENDER) != 0) {
        return std::nullopt;
    }
    const FT_Bitmap& bitmap = face->face->glyph->bitmap;
    if (bitmap.pixel_mode != FT_PIXEL_MODE_GRAY || bitmap.width == 0 || bitmap.rows == 0) {
        return std::nullopt;
    }
    Plane plane(int(bitmap.width), int(bitmap.rows));
    for (int y = 0; y < plane.height; ++y) {
        std::copy_n(bitmap.buffer + std::ptrdiff_t(y) * bitmap.pitch, plane.width, plane.row(y));
    }
    return plane;
}

} // namespace pelloran::characters
