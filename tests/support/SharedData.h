#pragma once

#include <QFileInfo>
#include <QString>

// The folder of game logs, painted screens and card names that lies beside some checkouts and is never part of them.
namespace pelloran::testing {

QString sharedData(const QString& relative);

} // namespace pelloran::testing

// First statement of a test that needs a file of that folder.
#define SKIP_WITHOUT_SHARED_DATA(relative)                                                                             \
    if (!QFileInfo::exists(pelloran::testing::sharedData(QStringLiteral(relative))))                                   \
    GTEST_SKIP() << "needs " relative " of the shared test data, which is not beside this checkout"
