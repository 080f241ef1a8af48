#include "support/TestMain.h"

#include <QApplication>

int main(int argc, char** argv) {
    // Also where nobody says so, as when the build asks for the names of the tests.
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    return pelloran::testing::runAllTests<QApplication>(argc, argv);
}
