#include "tools/characters/CharacterTrainer.h"
#include "tools/characters/Check.h"
#include "tools/characters/TrainerOptions.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <algorithm>
#include <array>
#include <cstdio>

// Trains the model of Chinese characters, see TrainerOptions::usage().

namespace pelloran::characters {

namespace {

constexpr int done = 0;
constexpr int failed = 1;
constexpr int wrongUsage = 2;

void say(FILE* stream, const QString& text) {
    std::fputs(text.toUtf8().constData(), stream);
    std::fflush(stream);
}

int fail(const QString& reason) {
    say(stderr, QStringLiteral("pelloran-train-characters: %1\n").arg(reason));
    return failed;
}

std::expected<QByteArray, QString> contentOf(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return std::unexpected(QStringLiteral("cannot read %1").arg(path));
    }
    return file.readAll();
}

std::expected<std::u32string, QString> charactersOf(const QString& path) {
    const auto bytes = contentOf(path);
    if (!bytes) {
        return std::unexpected(bytes.error());
    }
    std::u32string characters;
    for (const char32_t character : QString::fromUtf8(*bytes).toStdU32String()) {
        if (!QChar::isSpace(character)) {
            characters.push_back(character);
        }
    }
    std::ranges::sort(characters);
    const auto repeated = std::ranges::unique(characters);
    characters.erase(repeated.begin(), repeated.end());
    return characters;
}

// The fonts that the model is made from, all under the SIL Open Font License. Regular script is what clerical script
// is most like; it counts most.
std::vector<TrainingFace> packagedFaces() {
    constexpr int simplifiedChinese = 2; // of the faces of a Noto collection
    const QString folder = QStringLiteral("/usr/share/fonts/");
    std::vector<TrainingFace> faces;
    for (const char* weight : {"Light", "Regular", "Bold"}) {
        const QString path = QStringLiteral("truetype/lxgw-wenkai/LXGWWenKai-%1.ttf").arg(QLatin1String(weight));
        faces.push_back({.file = {.path = folder + path}, .variants = 5});
    }
    for (const char* weight : {"Thin", "Light", "DemiLight", "Regular", "Medium", "Bold", "Black"}) {
        const QString path = QStringLiteral("opentype/noto/NotoSansCJK-%1.ttc").arg(QLatin1String(weight));
        faces.push_back({.file = {.path = folder + path, .index = simplifiedChinese}});
    }
    for (const char* weight : {"ExtraLight", "Light", "Regular", "Medium", "SemiBold", "Bold", "Black"}) {
        const QString path = QStringLiteral("opentype/noto/NotoSerifCJK-%1.ttc").arg(QLatin1String(weight));
        faces.push_back({.file = {.path = folder + path, .index = simplifiedChinese}});
    }
    faces.push_back({.file = {.path = folder + QStringLiteral("truetype/smiley-sans/SmileySans-Oblique.ttf")}});
    return faces;
}

std::vector<TrainingFace> facesOf(const QString& list) {
    std::vector<TrainingFace> faces;
    for (const QString& text : list.split(u',', Qt::SkipEmptyParts)) {
        bool isNumber = false;
        const int variants = text.section(u'*', 1).toInt(&isNumber);
        faces.push_back({.file = FontFile::of(text.section(u'*', 0, 0)), .variants = isNumber ? variants : 1});
    }
    return faces;
}

std::expected<std::vector<TrainingFace>, QString> chosenFaces(const TrainerOptions& options) {
    std::vector<TrainingFace> chosen;
    for (const TrainingFace& face : options.fonts.isEmpty() ? packagedFaces() : facesOf(options.fonts)) {
        const auto glyphs = TypefaceGlyphs::open(face.file);
        if (!glyphs) {
            return std::unexpected(glyphs.error());
        }
        const bool isLeftOut = std::ranges::any_of(
            options.without, [&](const QString& name) { return glyphs->name().startsWith(name, Qt::CaseInsensitive); });
        if (!isLeftOut) {
            say(stderr, QStringLiteral("%1 %2\n").arg(glyphs->name(), glyphs->version()));
            chosen.push_back(face);
        }
    }
    return chosen;
}

int trainModel(const TrainerOptions& options) {
    const auto characters = charactersOf(options.characters);
    if (!characters) {
        return fail(characters.error());
    }
    const auto faces = chosenFaces(options);
    if (!faces) {
        return fail(faces.error());
    }
    const auto model =
        train({.characters = *characters,
               .faces = *faces,
               .dimensions = options.dimensions,
               .seed = options.seed,
               .threads = options.threads},
              [&](std::size_t count) { say(stderr, QStringLiteral("\r%1 of %2").arg(count).arg(characters->size())); });
    say(stderr, QStringLiteral("\n"));
    if (!model) {
        return fail(model.error());
    }
    QSaveFile file(options.out);
    if (!file.open(QIODevice::WriteOnly) || file.write(model->serialized()) < 0 || !file.commit()) {
        return fail(QStringLiteral("cannot write %1").arg(options.out));
    }
    say(stdout, model->origin() + u'\n');
    return done;
}

int checkModel(const TrainerOptions& options) {
    const auto bytes = contentOf(options.model);
    if (!bytes) {
        return fail(bytes.error());
    }
    const auto model = CharacterModel::parse(*bytes);
    if (!model) {
        return fail(QStringLiteral("%1: %2").arg(options.model, model.error()));
    }
    const auto among = options.among.isEmpty() ? model->characters() : charactersOf(options.among);
    if (!among) {
        return fail(among.error());
    }
    const auto results = check(FontFile::of(options.checkedFont), *model, *among);
    if (!results) {
        return fail(results.error());
    }
    for (const CheckResult& result : *results) {
        say(stdout, QStringLiteral("%1: %2 of %3, %4%\n")
                        .arg(result.what)
                        .arg(result.right)
                        .arg(result.glyphs)
                        .arg(100.0 * result.right / std::max(1, result.glyphs), 0, 'f', 2));
        if (options.mistakes) {
            say(stdout, QString::fromStdU32String(result.mistaken) + u'\n');
        }
    }
    return done;
}

int run(int argc, char** argv) {
    QStringList arguments;
    for (int i = 1; i < argc; ++i) {
        arguments.append(QString::fromLocal8Bit(argv[i]));
    }
    const auto options = TrainerOptions::parse(arguments);
    if (!options) {
        say(stderr, QStringLiteral("pelloran-train-characters: %1\n\n").arg(options.error()) + TrainerOptions::usage());
        return wrongUsage;
    }
    if (options->help) {
        say(stdout, TrainerOptions::usage());
        return done;
    }
    return options->checkedFont.isEmpty() ? trainModel(*options) : checkModel(*options);
}

} // namespace

} // namespace pelloran::characters

int main(int argc, char** argv) {
    return pelloran::characters::run(argc, argv);
}
