#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>

#include <gtest/gtest.h>

namespace pelloran::stage {

// All of a file, which a test expects to be there.
inline QByteArray contents(const QString& path) {
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    return file.readAll();
}

} // namespace pelloran::stage
