#include "support/TestMain.h"

#include <QApplication>

int main(int argc, char** argv) {
    return pelloran::testing::runAllTests<QApplication>(argc, argv);
}
