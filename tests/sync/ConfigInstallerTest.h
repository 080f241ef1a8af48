#pragma once

#include "sync/ConfigInstaller.h"
#include "sync/InstallTools.h"
#include "tests/fakes/FakeApplicationFiles.h"
#include "tests/support/CollectedLog.h"
#include "tests/support/Printing.h"
#include "tests/support/TarWriter.h"
#include "tests/sync/TextLanguage.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <system_error>

namespace pelloran::testing {

// An installer with folders of its own.
class ConfigInstallerTest : public ::testing::Test {
protected:
    ConfigInstallerTest() {
        tools.temporaryFolder = folder.filePath(QStringLiteral("temporary"));
        tools.lockPatience = std::chrono::milliseconds(100);
    }

    // As where two folders cannot be exchanged in one step.
    static std::error_code unsupported(const std::filesystem::path&, const std::filesystem::path&) {
        return std::make_error_code(std::errc::not_supported);
    }

    LocalConfig config() const { return LocalConfig(files); }

    ConfigInstaller installer() const { return ConfigInstaller(config(), tools); }

    QString directory() const { return config().configDirectory(); }

    static void write(const QString& path, const QByteArray& content) {
        ASSERT_TRUE(QDir().mkpath(QFileInfo(path).path()));
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << path.toStdString();
        ASSERT_EQ(file.write(content), content.size());
    }

    static QByteArray read(const QString& path) {
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
        return file.readAll();
    }

    // Everything below, relative to it.
    static QStringList everythingIn(const QString& path) {
        QStringList found;
        std::error_code error;
        const std::filesystem::path root = path.toStdString();
        for (const auto& entry : std::filesystem::recursive_directory_iterator(root, error)) {
            found.append(QString::fromStdString(entry.path().lexically_relative(root).string()));
        }
        found.sort();
        return found;
    }

    // Of a folder that an installation prepares.
    QString staging(const QString& id) const { return directory() + QStringLiteral(".staging-") + id; }

    static void setAge(const QString& path, int minutes) {
        const auto time = std::filesystem::file_time_type::clock::now() - std::chrono::minutes(minutes);
        std::filesystem::last_write_time(path.toStdString(), time);
    }

    static RemoteManifest manifest(const QString& hash) {
        RemoteManifest made;
        made.hash = hash;
        return made;
    }

    static QByteArray bundle(const QByteArray& content) {
        TarWriter writer;
        writer.add({.name = "winrates/", .kind = '5', .mode = 0755});
        writer.add({.name = "winrates/class_winrates.json", .content = content});
        writer.add({.name = "extra", .content = content});
        return writer.gzipped();
    }

    void installFirst() const {
        const auto installed =
            installer().install(manifest(QStringLiteral("old")), R"({"hash": "old"})", bundle("old"));
        ASSERT_TRUE(installed) << installed.error().localizedDescription().toStdString();
    }

    void expectOldContent() const {
        EXPECT_EQ(config().localHash(), QStringLiteral("old"));
        EXPECT_EQ(read(directory() + QStringLiteral("/winrates/class_winrates.json")), "old");
        EXPECT_EQ(read(directory() + QStringLiteral("/manifest.json")), R"({"hash": "old"})");
    }

    const TextLanguage english;
    QTemporaryDir folder;
    FakeApplicationFiles files{folder.path()};
    InstallTools tools;
    CollectedLog logged;
};

} // namespace pelloran::testing
