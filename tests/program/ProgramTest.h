#pragma once

#include "tests/support/ProgramRun.h"
#include "tests/support/ScriptedServer.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

// The program as its users start it, with a home of its own.
namespace pelloran {

inline const QString program = testing::programToTest("PELLORAN_TEST_PROGRAM", PELLORAN_PROGRAM);

class ProgramTest : public ::testing::Test {
protected:
    testing::ProgramOutput run(const QStringList& arguments) const {
        return testing::runProgram(program, arguments, environment);
    }

    QString path(const char* name) const { return home.path() + u'/' + QString::fromUtf8(name); }

    QString write(const char* name, const QByteArray& bytes) const {
        const QString target = path(name);
        EXPECT_TRUE(QDir().mkpath(QFileInfo(target).path()));
        QFile file(target);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
        return target;
    }

    static testing::ScriptedServer::Script ok(const QByteArray& body) {
        return testing::ScriptedServer::answer("200 OK", {}, body);
    }

    testing::ProgramOutput sync(const testing::ScriptedServer& server) const {
        return run({QStringLiteral("sync"), QStringLiteral("--config-server"), server.base()});
    }

    testing::ProgramOutput checkUpdate(const testing::ScriptedServer& server) const {
        return run({QStringLiteral("check-update"), QStringLiteral("--update-server"), server.base()});
    }

    // What the program calls itself.
    QString version() const {
        return QString::fromUtf8(run({QStringLiteral("--version")}).standardOutput)
            .section(u'\n', 0, 0)
            .section(u' ', 1);
    }

    QTemporaryDir home;
    QProcessEnvironment environment = testing::cleanEnvironment(home.path());
};

} // namespace pelloran
