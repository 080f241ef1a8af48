#pragma once

#include "platform/ApplicationPresence.h"

#include <QStringList>

namespace pelloran::testing {

// A desktop that knows programs, and notes what this one asks of it.
class FakeApplicationPresence final : public ApplicationPresence {
public:
    explicit FakeApplicationPresence(QStringList& allSteps)
        : steps(allSteps) {}

    void begin() override { steps << QStringLiteral("presence begun"); }

    void activate() override { steps << QStringLiteral("program activated"); }

private:
    QStringList& steps;
};

} // namespace pelloran::testing
