#pragma once

#include <QString>

#include <gtest/gtest.h>

namespace pelloran::testing {

// While it lives, this one warning is swallowed; every other goes where it went before. It must come at least once.
class ExpectedWarning {
public:
    explicit ExpectedWarning(const QString& text) {
        expected = text;
        seen = 0;
        before = qInstallMessageHandler([](QtMsgType type, const QMessageLogContext& context, const QString& message) {
            if (type == QtWarningMsg && message == expected) {
                ++seen;
            } else {
                before(type, context, message);
            }
        });
    }

    ~ExpectedWarning() {
        qInstallMessageHandler(before);
        EXPECT_GT(seen, 0) << "no warning: " << expected.toStdString();
    }

    ExpectedWarning(const ExpectedWarning&) = delete;
    ExpectedWarning& operator=(const ExpectedWarning&) = delete;

private:
    inline static QString expected;
    inline static int seen = 0;
    inline static QtMessageHandler before = nullptr;
};

} // namespace pelloran::testing
