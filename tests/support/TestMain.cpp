#include <QCoreApplication>
#include <QStandardPaths>

#include <gtest/gtest.h>

namespace {

QtMessageHandler printMessage = nullptr;

void failOnWarning(QtMsgType type, const QMessageLogContext& context, const QString& message) {
    if (type == QtWarningMsg || type == QtCriticalMsg) {
        ADD_FAILURE() << "unexpected warning: " << message.toStdString();
    }
    printMessage(type, context, message);
}

} // namespace

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    QStandardPaths::setTestModeEnabled(true);
    const QCoreApplication application(argc, argv);
    printMessage = qInstallMessageHandler(failOnWarning);
    return RUN_ALL_TESTS();
}
