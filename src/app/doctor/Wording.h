#pragma once

#include <QString>
#include <QStringList>

#include <chrono>

// How sentences about a machine are put, for people.
namespace pelloran::doctor {

// In the largest unit of which there are two: "119 seconds", "3 minutes".
QString durationText(std::chrono::seconds duration);

// With a capital letter and an end; "" stays so.
QString sentence(QString text);

// The first five, and how many more there are.
QString shortList(const QStringList& texts);

} // namespace pelloran::doctor
