#include "app/ManualPage.h"

#include "app/CommandLine.h"
#include "tests/support/Printing.h"

#include <QRegularExpression>

#include <gtest/gtest.h>

// Held against what --help really prints, not against the table that both are made of.
namespace pelloran {
namespace {

QString helpOf(const QStringList& words) {
    const auto command = parseCommandLine(words + QStringList{QStringLiteral("--help")});
    return command ? std::get<PrintText>(*command).text : QString();
}

QStringList found(const QString& text, const QString& pattern) {
    QStringList all;
    const QRegularExpression expression(pattern, QRegularExpression::MultilineOption);
    for (auto match = expression.globalMatch(text); match.hasNext();) {
        all.append(match.next().captured(1));
    }
    return all;
}

// As roff writes it.
QString typed(QString text) {
    return text.replace(u'-', QStringLiteral("\\-"));
}

void expectOptions(const QString& part, const QString& help) {
    const QStringList options = found(help, QStringLiteral("^  ((?:-[a-z], )?--[a-z-]+(?: [A-Z][A-Za-z.]*)?)  "));
    EXPECT_FALSE(options.isEmpty());
    for (const QString& option : options) {
        EXPECT_TRUE(part.contains(QStringLiteral("\n.B %1\n").arg(typed(option)))) << option.toStdString();
    }
    EXPECT_EQ(part.count(QStringLiteral(".TP\n")), options.size()) << "options that --help does not know";
}

TEST(ManualPage, HasEveryOptionAndCommandOfTheHelp) {
    const QString page = manualPage();
    const QString help = helpOf({});
    expectOptions(page.section(QStringLiteral(".SH OPTIONS\n"), 1).section(QStringLiteral(".SH "), 0, 0), help);

    const QString commandPart = page.section(QStringLiteral(".SH COMMANDS\n"), 1).section(QStringLiteral(".SH "), 0, 0);
    const QStringList commands = found(help.section(QStringLiteral("Commands"), 1), QStringLiteral("^  ([a-z-]+) "));
    EXPECT_GE(commands.size(), 8);
    const QStringList parts = commandPart.split(QStringLiteral(".SS pelloran ")).mid(1);
    ASSERT_EQ(parts.size(), commands.size());
    for (qsizetype i = 0; i < parts.size(); ++i) {
        SCOPED_TRACE(commands[i].toStdString());
        EXPECT_TRUE(parts[i].startsWith(typed(commands[i]) + u' '));
        const QString own = helpOf({commands[i]});
        EXPECT_NE(own, help);
        expectOptions(parts[i], own);
    }
}

TEST(ManualPage, HasTheSectionsThatReadersLookFor) {
    const QString page = manualPage();
    EXPECT_TRUE(page.startsWith(QStringLiteral(".TH PELLORAN 1 ")));
    for (const char* section :
         {"NAME", "SYNOPSIS", "DESCRIPTION", "OPTIONS", "COMMANDS", "EXIT STATUS", "ENVIRONMENT", "FILES"}) {
        EXPECT_TRUE(page.contains(QStringLiteral("\n.SH %1\n").arg(QString::fromUtf8(section)))) << section;
    }
    EXPECT_FALSE(page.contains(QStringLiteral("\n\n"))) << "an empty line is a space of roff's own";
}

} // namespace
} // namespace pelloran
