#pragma once

#include <QStringList>

#include <expected>
#include <optional>

namespace pelloran::characters {

struct TrainerOptions {
    bool help = false;
    QString out;
    QString characters;
    QString fonts;       // "": those of the packages
    QStringList without; // names, or beginnings of names, of fonts
    int dimensions = 160;
    quint64 seed = 1;
    int threads = 2;
    QString checkedFont; // "": a model is trained
    QString model;       // that is checked
    QString among;       // "": all characters of the model
    bool mistakes = false;

    // From the arguments after the program's name. The error is one line for people.
    static std::expected<TrainerOptions, QString> parse(const QStringList& arguments);

    static QString usage();
};

} // namespace pelloran::characters
