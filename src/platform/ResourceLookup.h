#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace pelloran {

// Path of the regular file `baseName`.`extension` in `subfolder` of the first of the folders that has it there; clean,
// and absolute where the folders are.
std::optional<QString> findResource(const QStringList& folders, const QString& baseName, const QString& extension,
                                    const QString& subfolder);

} // namespace pelloran
