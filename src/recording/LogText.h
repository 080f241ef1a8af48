#pragma once

#include "recording/Format.h"
#include "recording/Redaction.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <optional>

namespace pelloran::recording {

// A log file as a recording keeps it: the lines that concern the draft, without what is nobody's business. Goes only
// through what was added since it last looked.
class LogText {
public:
    explicit LogText(Owner whose);

    // The file's bytes now; absent: there is none, or it cannot be read.
    void update(const std::optional<QByteArray>& bytes);

    // What has happened since the last call, or since forget(); absent: nothing.
    std::optional<LogChange> takeChange();

    // The next change tells everything that matters now.
    void forget() { told = {}; }

private:
    struct Told {
        bool any = false;
        bool there = false;
        qsizetype lines = 0;
        QString unfinished;
    };

    QString kept(QByteArrayView line) const;
    QString keptUnfinished(QByteArrayView line) const;
    void dropEarlierDrafts();

    Owner owner;
    bool there = false;
    QByteArray seen;        // with what it begins with, up to `complete`, gone through
    qsizetype complete = 0; // where the last line begins that has no end yet
    QStringList lines;
    QString unfinished;
    Told told;
};

} // namespace pelloran::recording
