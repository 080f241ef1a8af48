#pragma once

#include <QByteArray>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QProcessEnvironment>
#include <QStringList>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <vector>

namespace pelloran::testing {

// An environment that holds nothing of the machine's user: folders of its own, English, no display.
inline QProcessEnvironment cleanEnvironment(const QString& home) {
    QProcessEnvironment environment;
    environment.insert(QStringLiteral("PATH"), qEnvironmentVariable("PATH"));
    environment.insert(QStringLiteral("HOME"), home);
    environment.insert(QStringLiteral("XDG_DATA_HOME"), home + QStringLiteral("/data"));
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), home + QStringLiteral("/config"));
    environment.insert(QStringLiteral("LANG"), QStringLiteral("C.UTF-8"));
    for (const char* kept : {"FONTCONFIG_FILE", "ASAN_OPTIONS", "LSAN_OPTIONS", "UBSAN_OPTIONS", "TSAN_OPTIONS"}) {
        if (qEnvironmentVariableIsSet(kept)) {
            environment.insert(QString::fromLatin1(kept), qEnvironmentVariable(kept));
        }
    }
    return environment;
}

// The program that was built, unless the variable names another one, such as an installed one.
inline QString programToTest(const char* variable, const char* built) {
    return qEnvironmentVariableIsSet(variable) ? qEnvironmentVariable(variable) : QString::fromLocal8Bit(built);
}

struct ProgramOutput {
    int exitCode = -1;
    QByteArray standardOutput;
    QByteArray standardError;

    // Every line of standard output as the object it must be.
    std::vector<QJsonObject> lines() const {
        std::vector<QJsonObject> objects;
        for (const QByteArray& line : standardOutput.split('\n')) {
            if (!line.isEmpty()) {
                const QJsonDocument document = QJsonDocument::fromJson(line);
                EXPECT_TRUE(document.isObject()) << line.toStdString();
                objects.push_back(document.object());
            }
        }
        return objects;
    }
};

// Runs a program to its end.
inline ProgramOutput runProgram(const QString& program, const QStringList& arguments,
                                const QProcessEnvironment& environment) {
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(program, arguments);
    EXPECT_TRUE(process.waitForFinished(60'000)) << program.toStdString() << " does not end";
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit) << process.readAllStandardError().toStdString();
    ProgramOutput output{process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
    // A build with a sanitizer ends the program there: what is missing in its answer would not tell why.
    EXPECT_FALSE(output.standardError.contains("Sanitizer: ")) << output.standardError.toStdString();
    return output;
}

} // namespace pelloran::testing
