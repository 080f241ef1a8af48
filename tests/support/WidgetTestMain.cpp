#include "tests/support/TestMain.h"

#include <QApplication>

int main(int argc, char** argv) {
    // Also where the program is only asked for its tests, or run by hand.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    return pelloran::testing::runAllTests<QApplication>(argc, argv);
}
