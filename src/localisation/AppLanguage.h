#pragma once

#include "platform/SystemSettings.h"
#include "platform/UserDefaults.h"

#include <QObject>
#include <QString>
#include <QStringView>

#include <array>
#include <optional>

namespace pelloran {

// The language of the user interface: the user's choice, and what it comes to. All of it may be called from any thread
// once `configure` has run.
class AppLanguage {
public:
    enum Value { system, zh, en };

    constexpr AppLanguage(Value chosen)
        : value(chosen) {}

    constexpr operator Value() const { return value; }

    // In the order of the language menu.
    static constexpr std::array<Value, 3> allCases() { return {system, zh, en}; }

    // Takes exactly "system", "zh" and "en".
    static std::optional<AppLanguage> fromRawValue(QStringView text);
    QString rawValue() const;

    // Where the choice is kept and what the desktop prefers; both must outlive every later call. Until then, and after
    // `configure(nullptr, nullptr)`, nothing is stored and the system counts as English. Drops an override. Call it
    // from one thread while no other uses this class.
    static void configure(UserDefaults* defaults, const SystemSettings* settings);

    // The choice in force: the override of this run, else the stored text, else `system`.
    static AppLanguage preference();

    // Stores the choice, ends an override, and announces the change when the choice in force becomes another one.
    static void setPreference(AppLanguage choice);

    // For this run only, until the user makes a choice (the command line's --language). Announces nothing.
    static void overridePreference(AppLanguage choice);

    // The language the choice in force comes to: `zh` or `en`, never `system`.
    static AppLanguage resolvedPreference();

    // `zh` and `en` are themselves; `system` is `zh` when the first preferred language of the system is any Chinese,
    // and `en` for every other language.
    AppLanguage resolved() const;
    bool isChinese() const;

    // Entry in the language menu; a language is named in itself.
    QString menuTitle() const;

    // "Pelloran.AppLanguageDidChange".
    static QString didChangeNotification();

private:
    Value value;
};

// Tells of changes of the language. Signals are sent on the thread that made the choice; a receiver on another thread
// gets them queued.
class AppLanguageNotifier final : public QObject {
    Q_OBJECT

public:
    static AppLanguageNotifier& shared();

Q_SIGNALS:
    // `name` is AppLanguage::didChangeNotification().
    void posted(const QString& name);
};

} // namespace pelloran
