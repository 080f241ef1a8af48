#include "tools/stage/StageOptions.h"

#include "tests/support/Printing.h"

#include <QFile>
#include <QRegularExpression>

#include <gtest/gtest.h>

#include <set>

namespace pelloran::stage {

namespace {

QStringList words(const char* arguments) {
    return QString::fromUtf8(arguments).split(u' ', Qt::SkipEmptyParts);
}

} // namespace

TEST(StageOptions, HasDefaultsForEverything) {
    const auto options = StageOptions::parse({});
    ASSERT_TRUE(options.has_value());
    EXPECT_EQ(options->scenario, QStringLiteral("demo"));
    EXPECT_EQ(options->size, QSize(1920, 1080));
    EXPECT_FALSE(options->language.has_value());
    EXPECT_FALSE(options->look.has_value());
    EXPECT_FALSE(options->lettering.has_value());
    EXPECT_EQ(options->paintScreens, QString());
    EXPECT_EQ(options->count, 24);
    EXPECT_EQ(options->speed, 1);
    EXPECT_FALSE(options->help || options->loop || options->fullScreen || options->stepsOnStdin || options->exitAtEnd ||
                 options->heroesByName);
}

TEST(StageOptions, ReadsEveryOptionWithAndWithoutAnEqualsSign) {
    const auto options = StageOptions::parse(
        words("--scenario=demo-zh --logs-dir /a=b --size 1280x720 --language zh --speed 2.5 --loop --seed 7 "
              "--full-screen --picture p.png --step 3 --steps-on-stdin --heroes-by-name"));
    ASSERT_TRUE(options.has_value()) << options.error().toStdString();
    EXPECT_EQ(options->scenario, QStringLiteral("demo-zh"));
    EXPECT_EQ(options->logsDir, QStringLiteral("/a=b"));
    EXPECT_EQ(options->size, QSize(1280, 720));
    EXPECT_EQ(options->language, Language::chinese);
    EXPECT_EQ(options->speed, 2.5);
    EXPECT_TRUE(options->loop);
    EXPECT_EQ(options->seed, 7U);
    EXPECT_TRUE(options->fullScreen);
    EXPECT_TRUE(options->heroesByName);
    EXPECT_EQ(options->picture, QStringLiteral("p.png"));
    EXPECT_EQ(options->step, 3);
    EXPECT_TRUE(options->stepsOnStdin);
}

TEST(StageOptions, ReadsWhatBelongsToASeriesOfScreens) {
    const auto options = StageOptions::parse(
        words("--paint-screens out --count 3 --cards c.json --seed 9 --look old --lettering clerical --language zh"));
    ASSERT_TRUE(options.has_value()) << options.error().toStdString();
    EXPECT_EQ(options->paintScreens, QStringLiteral("out"));
    EXPECT_EQ(options->count, 3);
    EXPECT_EQ(options->cards, QStringLiteral("c.json"));
    EXPECT_EQ(options->look, Look::parchment);
    EXPECT_EQ(options->lettering, ChineseLettering::clerical);
    EXPECT_EQ(StageOptions::parse(words("--look new --lettering printed"))->look, Look::felt);
    EXPECT_EQ(StageOptions::parse(words("--look new --lettering printed"))->lettering, ChineseLettering::printed);
}

TEST(StageOptions, RefusesWhatDoesNotFit) {
    struct Row {
        const char* why;
        const char* arguments;
        const char* mentioned;
    };

    const Row rows[] = {
        {"unknown option", "--colour", "--colour"},
        {"a word by itself", "demo", "demo"},
        {"no value", "--scenario", "needs a value"},
        {"an empty value", "--logs-dir=", "must not be empty"},
        {"a value where none belongs", "--loop=yes", "takes no value"},
        {"a size of one number", "--size 1920", "WIDTHxHEIGHT"},
        {"a size below the smallest", "--size 399x300", "400x300"},
        {"a size above the largest", "--size 7681x4320", "7680x4320"},
        {"a size with a sign", "--size -800x600", "WIDTHxHEIGHT"},
        {"a language nobody speaks", "--language fr", "en or zh"},
        {"standing still", "--speed 0", "0.01"},
        {"going backwards", "--speed -1", "0.01"},
        {"not a number", "--speed nan", "0.01"},
        {"a broken seed", "--seed 1.5", "whole number"},
        {"a step before the first", "--picture p.png --step -1", "from 0"},
        {"a step without a picture", "--step 1", "--picture"},
        {"a look it never had", "--look newest", "old or new"},
        {"a lettering nobody cut", "--lettering gothic", "printed or clerical"},
        {"no screens at all", "--paint-screens out --count 0", "from 1"},
        {"a count without a folder", "--count 3", "--paint-screens"},
        {"cards without a folder", "--cards c.json", "--paint-screens"},
        {"a step and a series", "--paint-screens out --picture p.png", "not both"},
        {"an end that never comes", "--loop --exit-at-end", "no end"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.why);
        const auto options = StageOptions::parse(words(row.arguments));
        ASSERT_FALSE(options.has_value());
        EXPECT_TRUE(options.error().contains(QString::fromUtf8(row.mentioned))) << options.error().toStdString();
    }
}

TEST(StageOptions, HasAManualPageWithEveryOption) {
    QFile file(QStringLiteral(PELLORAN_SOURCES "/packaging/linux/pelloran-stage.1"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QString page = QString::fromUtf8(file.readAll())
                             .replace(QStringLiteral("\\-"), QStringLiteral("-"))
                             .replace(QStringLiteral(" \" "), QStringLiteral(" ")) // before a value in another face
                             .remove(u'"');
    const auto found = [](const QString& text, const QString& pattern) {
        std::set<QString> all;
        const QRegularExpression expression(pattern, QRegularExpression::MultilineOption);
        for (auto match = expression.globalMatch(text); match.hasNext();) {
            all.insert(match.next().captured(1));
        }
        return all;
    };
    // With the value that it takes.
    const auto options = found(StageOptions::usage(), QStringLiteral("^  (--[a-z-]+(?: [A-Za-z|]+)?)  "));
    EXPECT_GE(options.size(), 15U);
    EXPECT_EQ(found(page, QStringLiteral("^\\.TP\n\\.BI? (.*)$")), options);
}

} // namespace pelloran::stage
