#include "support/TestMain.h"

#include <QApplication>

int main(int argc, char** argv) {
    // Also while the tests are only listed, right after the build.
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    return pelloran::testing::runAllTests<QApplication>(argc, argv);
}
