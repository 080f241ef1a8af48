#include "tests/stage/Contents.h"
#include "tests/support/Printing.h"
#include "tools/stage/Scenario.h"

#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

// The program itself, run as a user without a display runs it.
namespace pelloran::stage {

namespace {

struct Outcome {
    int exitCode = -1;
    QByteArray output;
    QByteArray errors;
};

Outcome run(const QStringList& arguments, const QHash<QString, QString>& variables = {}) {
    QProcess program;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const auto& [name, value] : variables.asKeyValueRange()) {
        environment.insert(name, value);
    }
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) {
        environment.remove(QString::fromLatin1(name));
    }
    program.setProcessEnvironment(environment);
    program.start(QStringLiteral(PELLORAN_STAGE), arguments);
    if (!program.waitForFinished(60000) || program.exitStatus() != QProcess::NormalExit) {
        ADD_FAILURE() << "crashed or never ended: " << program.errorString().toStdString();
    }
    return {program.exitCode(), program.readAllStandardOutput(), program.readAllStandardError()};
}

} // namespace

TEST(StageProgram, HelpsWithoutADisplay) {
    const Outcome outcome = run({QStringLiteral("--help")});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_TRUE(outcome.output.startsWith("Usage: pelloran-stage"));
    EXPECT_EQ(outcome.errors, QByteArray());
}

TEST(StageProgram, ListsItsScenariosWithoutADisplay) {
    const Outcome outcome = run({QStringLiteral("--list-scenarios")});
    EXPECT_EQ(outcome.exitCode, 0);
    for (const QString& name : Scenario::shippedNames()) {
        EXPECT_TRUE(outcome.output.contains(name.toUtf8() + ": ")) << outcome.output.toStdString();
    }
}

TEST(StageProgram, ShowsItsUsageWhenArgumentsDoNotFit) {
    struct Row {
        const char* why;
        QStringList arguments;
        const char* mentioned;
    };

    const Row rows[] = {
        {"unknown option", {QStringLiteral("--nonsense")}, "Usage:"},
        {"no such scenario", {QStringLiteral("--scenario"), QStringLiteral("none")}, "none"},
        {"a step beyond the end",
         {QStringLiteral("--picture"), QStringLiteral("p.png"), QStringLiteral("--step"), QStringLiteral("999")},
         "last step"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.why);
        const Outcome outcome = run(row.arguments);
        EXPECT_EQ(outcome.exitCode, 2);
        EXPECT_EQ(outcome.output, QByteArray());
        EXPECT_TRUE(outcome.errors.contains(row.mentioned)) << outcome.errors.toStdString();
    }
}

TEST(StageProgram, SaysThatItNeedsADisplayToPlay) {
    const Outcome outcome = run({});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_TRUE(outcome.errors.contains("display")) << outcome.errors.toStdString();
}

TEST(StageProgram, PaintsEveryKindOfStepInBothLanguagesAndManySizes) {
    const QTemporaryDir folder;
    const QString picture = folder.filePath(QStringLiteral("step.png"));
    const auto scenario = Scenario::load(QStringLiteral("demo-zh"));
    ASSERT_TRUE(scenario.has_value()) << scenario.error().toStdString();
    const QStringList sizes{QStringLiteral("400x300"), QStringLiteral("640x360"), QStringLiteral("500x900"),
                            QStringLiteral("1280x400")};
    QSet<int> painted;
    for (std::size_t step = 0; step < scenario->steps.size(); ++step) {
        const int kind = static_cast<int>(scenario->steps[step].kind);
        if (painted.contains(kind)) {
            continue;
        }
        painted.insert(kind);
        for (const QString& language : {QStringLiteral("en"), QStringLiteral("zh")}) {
            const QString& size = sizes[(painted.size() + (language == u"zh" ? 1 : 0)) % sizes.size()];
            SCOPED_TRACE(QStringLiteral("step %1, %2, %3").arg(step).arg(language, size).toStdString());
            const Outcome outcome =
                run({QStringLiteral("--scenario"), QStringLiteral("demo-zh"), QStringLiteral("--picture"), picture,
                     QStringLiteral("--step"), QString::number(step), QStringLiteral("--size"), size,
                     QStringLiteral("--language"), language});
            ASSERT_EQ(outcome.exitCode, 0) << outcome.errors.toStdString();
            QFile file(picture);
            ASSERT_TRUE(file.open(QIODevice::ReadOnly));
            EXPECT_TRUE(file.read(8).endsWith("PNG\r\n\x1a\n"));
            EXPECT_GT(file.size(), 10000) << "a blank picture would be smaller";
            file.remove();
            const QJsonObject line = QJsonDocument::fromJson(outcome.output).object();
            EXPECT_EQ(line[u"step"].toInteger(-1), static_cast<qint64>(step));
            EXPECT_EQ(line[u"kind"].toString(), kindName(scenario->steps[step].kind));
            EXPECT_EQ(line[u"language"].toString(), language);
        }
    }
    EXPECT_EQ(painted.size(), 9) << "the scenario shows every kind of step";
}

TEST(StageProgram, LooksAsItIsTold) {
    const QTemporaryDir folder;
    QList<QByteArray> pictures;
    for (const QStringList& arguments : {QStringList{}, QStringList{QStringLiteral("--look"), QStringLiteral("new")},
                                         QStringList{QStringLiteral("--look"), QStringLiteral("old")},
                                         QStringList{QStringLiteral("--lettering"), QStringLiteral("clerical")}}) {
        const QString path = folder.filePath(QStringLiteral("p.png"));
        const Outcome outcome =
            run(QStringList{QStringLiteral("--scenario"), QStringLiteral("demo-zh"), QStringLiteral("--picture"), path,
                            QStringLiteral("--step"), QStringLiteral("1"), QStringLiteral("--size"),
                            QStringLiteral("640x360")} +
                arguments);
        ASSERT_EQ(outcome.exitCode, 0) << outcome.errors.toStdString();
        pictures.append(contents(path));
    }
    EXPECT_TRUE(pictures[0] == pictures[1]) << "the new look is the default";
    EXPECT_FALSE(pictures[0] == pictures[2]);
    EXPECT_FALSE(pictures[0] == pictures[3]);
}

TEST(StageProgram, LettersLikeInscriptionsWithoutATypefaceOfRegularScript) {
#ifdef Q_OS_MACOS
    GTEST_SKIP() << "fonts are hidden by means of fontconfig";
#endif
    const QTemporaryDir folder;
    const QString fonts = folder.filePath(QStringLiteral("fonts.conf"));
    QFile file(fonts);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(R"(<?xml version="1.0"?><!DOCTYPE fontconfig SYSTEM "fonts.dtd"><fontconfig>
        <include>/etc/fonts/fonts.conf</include><selectfont><rejectfont>
        <glob>*/arphic/ukai*</glob><glob>*LXGW*</glob><glob>*[Kk]aiti*</glob></rejectfont></selectfont></fontconfig>)");
    file.close();
    const auto screen = [&folder](const char* name, const char* lettering, const QHash<QString, QString>& variables) {
        const QString target = folder.filePath(QString::fromLatin1(name));
        const Outcome outcome =
            run({QStringLiteral("--paint-screens"), target, QStringLiteral("--count"), QStringLiteral("1"),
                 QStringLiteral("--size"), QStringLiteral("640x360"), QStringLiteral("--language"),
                 QStringLiteral("zh"), QStringLiteral("--lettering"), QString::fromLatin1(lettering)},
                variables);
        EXPECT_EQ(outcome.exitCode, 0) << outcome.errors.toStdString();
        const QString picture = target + QStringLiteral("/0000-cards-zh");
        return std::pair(contents(picture + QStringLiteral(".png")),
                         QJsonDocument::fromJson(contents(picture + QStringLiteral(".json"))).object());
    };
    const QHash<QString, QString> hidden{{QStringLiteral("FONTCONFIG_FILE"), fonts}};
    const auto plain = screen("plain", "clerical", hidden);
    const auto brush = screen("brush", "clerical", {});
    EXPECT_FALSE(plain.first == screen("printed", "printed", hidden).first) << "still not as in a book";
    EXPECT_FALSE(plain.first == brush.first) << "scripts/setup installs a typeface of regular script";
    EXPECT_EQ(plain.second[u"names"], brush.second[u"names"]);
    for (qsizetype i = 0; i < 3; ++i) {
        const QJsonArray box = plain.second[u"nameBoxes"][i].toArray();
        const QJsonArray wanted = brush.second[u"nameBoxes"][i].toArray();
        for (qsizetype edge = 0; edge < 4; ++edge) {
            EXPECT_NEAR(box[edge].toInt(), wanted[edge].toInt(), 3) << "of the same size in the same place";
        }
    }
}

TEST(StageProgram, PaintsASeriesOfScreensWithTheTruthAboutEach) {
    const QTemporaryDir folder;
    const QString cards = folder.filePath(QStringLiteral("cards.json"));
    QFile file(cards);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(
        R"([{"card_id": "1", "name_en": "One", "type": "MINION"}, {"card_id": "2", "name_en": "Two", "type": "SPELL"},
                   {"card_id": "3", "name_en": "Three", "type": "WEAPON"}])");
    file.close();
    const QString target = folder.filePath(QStringLiteral("screens"));
    const QStringList arguments{QStringLiteral("--paint-screens"), target,
                                QStringLiteral("--count"),         QStringLiteral("2"),
                                QStringLiteral("--size"),          QStringLiteral("400x300"),
                                QStringLiteral("--language"),      QStringLiteral("en"),
                                QStringLiteral("--cards"),         cards};
    const Outcome outcome = run(arguments);
    ASSERT_EQ(outcome.exitCode, 0) << outcome.errors.toStdString();
    const QJsonObject first =
        QJsonDocument::fromJson(contents(target + QStringLiteral("/0000-cards-en.json"))).object();
    EXPECT_EQ(first[u"phase"].toString(), QStringLiteral("cardPick"));
    EXPECT_EQ(first[u"names"].toArray().size(), 3);
    EXPECT_GT(QFile(target + QStringLiteral("/0000-cards-en.png")).size(), 10000);
    const QJsonObject second =
        QJsonDocument::fromJson(contents(target + QStringLiteral("/0001-heroes-en.json"))).object();
    EXPECT_EQ(second[u"phase"].toString(), QStringLiteral("heroPick"));

    QStringList chinese = arguments;
    chinese[7] = QStringLiteral("zh");
    EXPECT_EQ(run(chinese).exitCode, 1) << "none of those cards has a Chinese name";
    QStringList missing = arguments;
    missing.last() += u'x';
    EXPECT_EQ(run(missing).exitCode, 1);
}

TEST(StageProgram, ReportsOffersAndChoicesWithTheNamesOnScreen) {
    const QTemporaryDir folder;
    const Outcome outcome =
        run({QStringLiteral("--picture"), folder.filePath(QStringLiteral("p.png")), QStringLiteral("--step"),
             QStringLiteral("4"), QStringLiteral("--size"), QStringLiteral("640x360")});
    const QJsonObject line = QJsonDocument::fromJson(outcome.output).object();
    EXPECT_EQ(line[u"kind"].toString(), QStringLiteral("choose"));
    EXPECT_EQ(line[u"hero"].toString(), QStringLiteral("MAGE"));
    ASSERT_EQ(line[u"offers"].toArray().size(), 3);
    EXPECT_EQ(line[u"offers"][0][u"name"].toString(), QStringLiteral("Fireball"));
    EXPECT_EQ(line[u"chosen"], line[u"offers"][0]);
    EXPECT_EQ(line[u"deck"].toArray(), QJsonArray{QStringLiteral("CS2_029")});
}

TEST(StageProgram, FailsWhereThePictureCannotBeWritten) {
    const QTemporaryDir folder;
    const Outcome outcome = run({QStringLiteral("--picture"), folder.filePath(QStringLiteral("no/such/folder/p.png")),
                                 QStringLiteral("--size"), QStringLiteral("400x300")});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_TRUE(outcome.errors.contains("cannot write")) << outcome.errors.toStdString();
}

} // namespace pelloran::stage
