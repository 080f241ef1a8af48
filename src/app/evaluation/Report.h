#pragma once

#include "app/evaluation/Judge.h"
#include "app/evaluation/Truth.h"

#include <QJsonObject>
#include <QString>
#include <QStringList>

#include <vector>

// How one picture was recognised, for people and for programs. docs/formats.md describes what is printed.
namespace pelloran::evaluation {

// One picture with all that came of it.
struct Picture {
    QString path;
    Truth truth;
    std::vector<Look> looks;         // one for each of rulesFor(truth): the first at this picture
    std::vector<Look> repeated;      // more of the same, with what the earlier ones taught the reader
    std::vector<Answer> answers;     // to `looks`
    std::vector<TextAnswer> texts{}; // empty where they were not asked for
};

// A line for each slot that is not as it should be, and for each boxed text.
QStringList remarks(const Picture& picture);

QJsonObject toJson(const Picture& picture);

} // namespace pelloran::evaluation
