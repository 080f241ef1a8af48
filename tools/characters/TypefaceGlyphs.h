#pragma once

#include "reading/Plane.h"

#include <QString>
#include <QStringList>

#include <expected>
#include <memory>
#include <optional>

namespace pelloran::characters {

// A face of a font file.
struct FontFile {
    QString path;
    int index = 0; // of the face within a collection

    // PATH or PATH#INDEX.
    static FontFile of(const QString& text);
};

// The glyphs of a face without hinting, so that they are the same everywhere. For one thread.
class TypefaceGlyphs {
public:
    // The error says what is wrong with the file.
    static std::expected<TypefaceGlyphs, QString> open(const FontFile& file);

    const QString& name() const { return fullName; }

    const QString& version() const { return versionText; }

    // Ink of the character in an em of `emSize` px, without any margin. Absent when the font lacks it.
    std::optional<Plane> draw(char32_t character);

private:
    struct Face;

    struct Closer {
        void operator()(Face* open) const;
    };

    TypefaceGlyphs() = default;

    std::unique_ptr<Face, Closer> face;
    QString fullName;
    QString versionText;
};

} // namespace pelloran::characters
