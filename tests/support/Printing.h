#pragma once

#include <QByteArray>
#include <QString>

#include <optional>
#include <ostream>

// Lets failed expectations show Qt's texts as text. Include it in every test that compares them.
QT_BEGIN_NAMESPACE

inline void PrintTo(const QString& text, std::ostream* out) {
    *out << '"' << text.toStdString() << '"';
}

inline void PrintTo(const QByteArray& bytes, std::ostream* out) {
    *out << '"' << bytes.toStdString() << '"';
}

QT_END_NAMESPACE
