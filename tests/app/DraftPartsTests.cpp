#include "app/DraftParts.h"

#include "base/SerialQueue.h"
#include "platform/ApplicationFiles.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace pelloran {
namespace {

TEST(DraftParts, GoBeyondTheLimitsOfLengthUnlessAskedNotTo) {
    const QTemporaryDir logs;
    RunLoop command;
    command.logsDir = logs.path();
    EXPECT_EQ(DraftParts(command).config.nameLengths, NameLengths::limitedUnlessExact);
    command.strictLengths = true;
    EXPECT_EQ(DraftParts(command).config.nameLengths, NameLengths::limited);
}

} // namespace
} // namespace pelloran
