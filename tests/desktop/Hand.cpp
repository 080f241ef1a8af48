#include "tests/desktop/Hand.h"

#include "tests/support/VirtualDisplay.h"

#include <QProcess>

#include <gtest/gtest.h>

namespace pelloran::testing {

namespace {

const QString tool = QStringLiteral("xdotool");
constexpr int steps = 8; // of one movement

QStringList moving(QPoint point) {
    return {QStringLiteral("mousemove"), QString::number(point.x()), QString::number(point.y())};
}

} // namespace

bool Hand::isInstalled() {
    return VirtualDisplay::isInstalled(tool);
}

void Hand::moveTo(QPoint point) const {
    run(moving(point));
}

void Hand::press(QPoint at) const {
    run(moving(at) + QStringList{QStringLiteral("mousedown"), QStringLiteral("1")});
}

void Hand::release() const {
    run({QStringLiteral("mouseup"), QStringLiteral("1")});
}

void Hand::click(QPoint at, int button) const {
    run(moving(at) + QStringList{QStringLiteral("click"), QString::number(button)});
}

void Hand::key(const char* combination) const {
    run({QStringLiteral("key"), QString::fromLatin1(combination)});
}

void Hand::pull(QPoint from, QPoint to) const {
    press(from);
    for (int step = 1; step <= steps; ++step) {
        moveTo(from + (to - from) * step / steps);
    }
}

void Hand::run(const QStringList& arguments) const {
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(tool, arguments);
    ASSERT_TRUE(process.waitForFinished(patience)) << "xdotool does not end";
    ASSERT_EQ(process.exitCode(), 0) << process.readAllStandardError().toStdString();
}

} // namespace pelloran::testing
