#pragma once

#include "app/CommandLine.h"

#include <QString>

#include <expected>
#include <vector>

class QCommandLineParser;

namespace pelloran {

// What the command line may hold. CommandLine parses by it and explains it.

// One option of one command.
struct CommandOption {
    QString name;
    QString valueName; // "" for a switch
    QString description;
};

// One command: what it is called, what it takes, and how its parsed options become a value.
struct CommandSyntax {
    QString name; // "" for the program itself
    QString arguments;
    QString description;
    std::vector<CommandOption> options;
    std::expected<Command, QString> (*build)(const QCommandLineParser& parsed);
};

// The program itself first.
const std::vector<CommandSyntax>& commandSyntaxes();

} // namespace pelloran
