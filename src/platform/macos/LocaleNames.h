#pragma once

#include <QString>
#include <QStringList>

namespace pelloran::macos {

// The system's identifier in the one form that is used here, such as "zh_Hans_CN" for "zh-Hans_CN@calendar=chinese".
QString localeIdentifierOf(QString systemIdentifier);

// The system's tags without those that are none.
QStringList languageTagsOf(const QStringList& systemTags);

} // namespace pelloran::macos
