#include "tools/characters/TrainerOptions.h"

namespace pelloran::characters {

namespace {

std::expected<int, QString> wholeNumber(const QString& name, const QString& value, int least, int most) {
    bool isNumber = false;
    const int number = value.toInt(&isNumber);
    if (!isNumber || number < least || number > most) {
        return std::unexpected(
            QStringLiteral("%1 must be a whole number from %2 to %3").arg(name).arg(least).arg(most));
    }
    return number;
}

} // namespace

std::expected<TrainerOptions, QString> TrainerOptions::parse(const QStringList& arguments) {
    TrainerOptions options;
    QStringList rest = arguments;
    while (!rest.isEmpty()) {
        const QString name = rest.takeFirst();
        if (name == u"--help") {
            options.help = true;
            return options;
        }
        if (name == u"--mistakes") {
            options.mistakes = true;
            continue;
        }
        if (rest.isEmpty()) {
            return std::unexpected(QStringLiteral("%1 is unknown or needs a value").arg(name));
        }
        const QString value = rest.takeFirst();
        if (name == u"--out") {
            options.out = value;
        } else if (name == u"--characters") {
            options.characters = value;
        } else if (name == u"--fonts") {
            options.fonts = value;
        } else if (name == u"--without") {
            options.without.append(value);
        } else if (name == u"--among") {
            options.among = value;
        } else if (name == u"--seed") {
            bool isNumber = false;
            options.seed = value.toULongLong(&isNumber);
            if (!isNumber) {
                return std::unexpected(QStringLiteral("--seed must be a whole number"));
            }
        } else if (name == u"--dimensions" || name == u"--threads") {
            const auto number = wholeNumber(name, value, 1, name == u"--threads" ? 64 : 512);
            if (!number) {
                return std::unexpected(number.error());
            }
            (name == u"--threads" ? options.threads : options.dimensions) = *number;
        } else if (name == u"--check") {
            if (rest.isEmpty()) {
                return std::unexpected(QStringLiteral("--check needs a font and a model"));
            }
            options.checkedFont = value;
            options.model = rest.takeFirst();
        } else {
            return std::unexpected(QStringLiteral("unknown argument %1").arg(name));
        }
    }
    const bool checks = !options.checkedFont.isEmpty();
    if (!checks && (options.out.isEmpty() || options.characters.isEmpty())) {
        return std::unexpected(QStringLiteral("training needs --out and --characters"));
    }
    if (!checks && (!options.among.isEmpty() || options.mistakes)) {
        return std::unexpected(QStringLiteral("--among and --mistakes go with --check"));
    }
    return options;
}

QString TrainerOptions::usage() {
    return QStringLiteral(R"(Usage: pelloran-train-characters --out FILE --characters FILE [OPTIONS]
       pelloran-train-characters --check FONT[#INDEX] MODEL [--among FILE] [--mistakes]

Learns from fonts how to tell Chinese characters apart, and writes what was learned as a model; or counts how many glyphs
of a font a model takes for what they are, clean and degraded to so many px.

  --out FILE         the model to write
  --characters FILE  UTF-8: the characters to learn; white space does not count
  --fonts LIST       FILE[#INDEX][*VARIANTS], commas between: fonts to learn from, the face within a collection (default:
                     0) and how many degraded glyphs of each character beside the clean one (default: 1). Without it:
                     LXGW WenKai, Noto Sans CJK, Noto Serif CJK and Smiley Sans, where their packages put them
  --without NAME     leave out fonts whose name begins so; may be given again
  --dimensions N     that a model keeps (default: 160)
  --seed N           of the degradation (default: 1)
  --threads N        default: 2; the model does not depend on it
  --among FILE       only these characters occur
  --mistakes         say which glyphs are taken for which
  --help             say this
)");
}

} // namespace pelloran::characters
