#include "platform/macos/LocaleNames.h"

namespace pelloran::macos {

QString localeIdentifierOf(QString systemIdentifier) {
    // What follows says how numbers, dates and the like differ from the usual ones.
    if (const qsizetype keywords = systemIdentifier.indexOf(u'@'); keywords >= 0) {
        systemIdentifier.truncate(keywords);
    }
    return systemIdentifier.replace(u'-', u'_');
}

QStringList languageTagsOf(const QStringList& systemTags) {
    QStringList tags;
    for (QString tag : systemTags) {
        if (!tag.isEmpty()) {
            tags << tag.replace(u'_', u'-');
        }
    }
    return tags;
}

} // namespace pelloran::macos
