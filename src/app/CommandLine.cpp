#include "app/CommandLine.h"

#include "app/CommandSyntax.h"
#include "app/Commit.h"

#include <QCommandLineParser>

#include <algorithm>
#include <vector>

namespace pelloran {

namespace {

QString usageLine(const CommandSyntax& syntax) {
    QString line = QStringLiteral("pelloran");
    for (const QString& word : {syntax.name, QStringLiteral("[options]"), syntax.arguments}) {
        if (!word.isEmpty()) {
            line += u' ' + word;
        }
    }
    return line;
}

CommandHelp helpOf(const CommandSyntax& syntax) {
    CommandHelp help{syntax.name, usageLine(syntax), syntax.description, {}};
    for (const CommandOption& option : syntax.options) {
        help.options.push_back(
            {QStringLiteral("--") + option.name + (option.valueName.isEmpty() ? QString() : u' ' + option.valueName),
             option.description});
    }
    help.options.push_back({QStringLiteral("-h, --help"), QStringLiteral("print this and end")});
    if (syntax.name.isEmpty()) {
        help.options.push_back({QStringLiteral("-v, --version"), QStringLiteral("print the version and end")});
    }
    return help;
}

QString helpText(const CommandSyntax& syntax) {
    const CommandHelp help = helpOf(syntax);
    const auto table = [](const std::vector<OptionHelp>& entries) {
        qsizetype width = 0;
        for (const OptionHelp& entry : entries) {
            width = std::max(width, entry.name.size());
        }
        QString lines;
        for (const OptionHelp& entry : entries) {
            lines += QStringLiteral("  %1  %2\n").arg(entry.name.leftJustified(width), entry.description);
        }
        return lines;
    };
    QString text = QStringLiteral("Usage: %1\n%2\n\nOptions:\n").arg(help.usage, help.description);
    text += table(help.options);
    if (syntax.name.isEmpty()) {
        std::vector<OptionHelp> commands;
        for (const CommandSyntax& command : commandSyntaxes()) {
            if (!command.name.isEmpty()) {
                commands.push_back({command.name, command.description});
            }
        }
        text += QStringLiteral("\nCommands (pelloran COMMAND --help tells more):\n") + table(commands);
    }
    return text;
}

// The version has a line of its own, so that whoever reads it needs to know no more.
QString versionText() {
    QString text = QStringLiteral("pelloran " PELLORAN_VERSION "\n");
    if (!commit().empty()) {
        text += QStringLiteral("commit %1\n").arg(QString::fromUtf8(commit()));
    }
    return text;
}

} // namespace

std::vector<CommandHelp> commandHelp() {
    std::vector<CommandHelp> all;
    for (const CommandSyntax& syntax : commandSyntaxes()) {
        all.push_back(helpOf(syntax));
    }
    return all;
}

std::expected<Command, UsageError> parseCommandLine(const QStringList& arguments) {
    const auto named = arguments.isEmpty()
                           ? commandSyntaxes().end()
                           : std::ranges::find(commandSyntaxes(), arguments.first(), &CommandSyntax::name);
    const bool isCommand = named != commandSyntaxes().end() && !named->name.isEmpty();
    const CommandSyntax& syntax = isCommand ? *named : commandSyntaxes().front();

    const auto usage = [&syntax](const QString& problem) {
        return std::unexpected(
            UsageError{QStringLiteral("pelloran: %1\nUsage: %2\nMore: pelloran %3--help\n")
                           .arg(problem, usageLine(syntax), syntax.name.isEmpty() ? QString() : syntax.name + u' ')});
    };
    QCommandLineParser parser;
    parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    const QCommandLineOption help(QStringList{QStringLiteral("h"), QStringLiteral("help")});
    const QCommandLineOption version(QStringList{QStringLiteral("v"), QStringLiteral("version")});
    parser.addOption(help);
    if (!isCommand) {
        parser.addOption(version);
    }
    for (const CommandOption& option : syntax.options) {
        parser.addOption({option.name, option.description, option.valueName});
    }
    // The parser takes the first word for the program's name.
    QStringList words = isCommand ? arguments : QStringList{QStringLiteral("pelloran")} + arguments;
    if (!parser.parse(words)) {
        return usage(parser.errorText());
    }
    if (parser.isSet(help)) {
        return PrintText{helpText(syntax)};
    }
    if (!isCommand && parser.isSet(version)) {
        return PrintText{versionText()};
    }
    auto command = syntax.build(parser);
    if (!command) {
        return usage(command.error());
    }
    return *command;
}

} // namespace pelloran
