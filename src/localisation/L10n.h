#pragma once

#include <QString>
#include <QStringView>

#include <concepts>
#include <cstdint>
#include <initializer_list>
#include <span>
#include <variant>

// Every text the user sees, by key, in Chinese and English. Nothing is cached: a change of the language shows in the
// next look-up. From any thread.
namespace pelloran::L10n {

// What fills one placeholder: text for %@, a whole number for %d.
class Argument {
public:
    Argument(const QString& text)
        : value(text) {}

    template <std::integral Integer>
    Argument(Integer number)
        : value(static_cast<std::int64_t>(number)) {}

    QString toString() const;

private:
    std::variant<QString, std::int64_t> value;
};

// The text of `key` in the language in force, else in English, else in Chinese, else the key itself.
QString tr(QStringView key);

// The same text with its placeholders filled in order. %@ and %d take the next argument, %% is a percent sign;
// arguments are never read for placeholders again, and numbers are written without grouping. A placeholder that has no
// argument left stays as it stands.
QString tr(QStringView key, std::span<const Argument> arguments);

inline QString tr(QStringView key, std::initializer_list<Argument> arguments) {
    return tr(key, std::span(arguments.begin(), arguments.size()));
}

} // namespace pelloran::L10n
