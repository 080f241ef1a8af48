#pragma once

#include "data/WinrateStore.h"
#include "tests/fakes/FakeApplicationFiles.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace pelloran::testing {

// A store loaded from files that the test wrote.
class SampleStore {
public:
    SampleStore(const QByteArray& cardFile, const QByteArray& classFile) {
        write(QStringLiteral("all_classes_LAST_7_DAYS.json"), cardFile);
        write(QStringLiteral("class_winrates.json"), classFile);
        reload();
    }

    void write(const QString& name, const QByteArray& bytes) const {
        const QString target = files.resourceFolder() + QStringLiteral("/winrates");
        ASSERT_TRUE(QDir().mkpath(target));
        QFile file(target + u'/' + name);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write(bytes), bytes.size());
    }

    void reload() {
        const auto loaded = store.loadFromBundle();
        ASSERT_TRUE(loaded) << loaded.error().localizedDescription.toStdString();
    }

private:
    QTemporaryDir folder;
    FakeApplicationFiles files{folder.path()};

public:
    WinrateStore store{files};
};

} // namespace pelloran::testing
