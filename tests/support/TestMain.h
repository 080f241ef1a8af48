#pragma once

#include "tests/support/TestFonts.h"

#include <QStandardPaths>

#include <gtest/gtest.h>

#include <clocale>

namespace pelloran::testing {

// What the main() of every test program does: no display, no network, the same fonts and words of the system
// everywhere, and an unexpected warning from Qt fails the test that caused it.
template <typename Application>
int runAllTests(int argc, char** argv) {
    static QtMessageHandler printMessage = nullptr;
    ::testing::InitGoogleTest(&argc, argv);
    QStandardPaths::setTestModeEnabled(true);
    useTestFonts();
    const Application application(argc, argv);
    std::setlocale(LC_MESSAGES, "C"); // Qt has set what the environment says
    printMessage =
        qInstallMessageHandler([](QtMsgType type, const QMessageLogContext& context, const QString& message) {
            // The platform without a screen says so of what only a window manager could do.
            const bool ofThePlatform = message.startsWith(QLatin1StringView("This plugin does not support "));
            if ((type == QtWarningMsg || type == QtCriticalMsg) && !ofThePlatform) {
                ADD_FAILURE() << "unexpected warning: " << message.toStdString();
            }
            printMessage(type, context, message);
        });
    return RUN_ALL_TESTS();
}

} // namespace pelloran::testing
