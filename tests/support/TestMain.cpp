#include "tests/support/TestMain.h"

#include <QCoreApplication>

int main(int argc, char** argv) {
    return pelloran::testing::runAllTests<QCoreApplication>(argc, argv);
}
