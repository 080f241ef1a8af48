#pragma once

#include <QByteArray>
#include <QProcess>

#include <gtest/gtest.h>

#include <cstdio>
#include <numeric>

namespace pelloran::testing {

// Writes archives that no tar would make of itself: any name, any kind, any hole.
class TarWriter {
public:
    struct Entry {
        QByteArray name; // up to 99 bytes
        QByteArray content = {};
        char kind =
            '0'; // '0' file, '1' hard link, '2' symbolic link, '3' device, '5' folder, '6' pipe, 'S' sparse file
        QByteArray linkTarget = {};
        int mode = 0644;
        QByteArray owner = "somebody";
        qint64 time = 1'700'000'000;
        qint64 hole = 0; // of kind 'S': how large a file without content is
    };

    void add(const Entry& entry) {
        QByteArray header(512, '\0');
        const auto put = [&header](qsizetype at, const QByteArray& text) { header.replace(at, text.size(), text); };
        const auto octal = [](qint64 number, int digits) {
            return QByteArray::number(number, 8).rightJustified(digits, '0');
        };
        put(0, entry.name);
        put(100, octal(entry.mode, 7));
        put(108, octal(0, 7));
        put(116, octal(0, 7));
        put(124, octal(entry.content.size(), 11));
        constexpr qint64 beyondOctal = qint64{1} << 33;
        if (entry.time < beyondOctal) {
            put(136, octal(entry.time, 11));
        } else {
            put(136, QByteArray("\x80\0\0\0", 4) +
                         QByteArray::fromHex(QByteArray::number(entry.time, 16).rightJustified(16, '0')));
        }
        put(156, QByteArray(1, entry.kind));
        put(157, entry.linkTarget);
        put(257, QByteArray("ustar\0"
                            "00",
                            8));
        if (entry.kind == 'S') {
            put(257, QByteArray("ustar  \0", 8)); // GNU's own
            put(386, octal(entry.hole, 11));
            put(398, octal(0, 11));
            put(483, octal(entry.hole, 11));
        }
        put(265, entry.owner);
        put(297, "everybody");
        put(329, octal(0, 7));
        put(337, octal(0, 7));
        put(148, QByteArray(8, ' '));
        const int sum = std::accumulate(header.cbegin(), header.cend(), 0,
                                        [](int total, char byte) { return total + static_cast<unsigned char>(byte); });
        put(148, octal(sum, 6) + QByteArray("\0 ", 2));
        bytes += header + entry.content;
        bytes += QByteArray((512 - entry.content.size() % 512) % 512, '\0');
    }

    // The whole archive, as a bundle comes.
    QByteArray gzipped() const { return gzip(bytes + QByteArray(1024, '\0')); }

    // The same entries again and again, packed once: gzip's files may follow each other.
    QByteArray gzippedTimes(int times) const { return gzip(bytes).repeated(times) + gzip(QByteArray(1024, '\0')); }

    static QByteArray gzip(const QByteArray& plain) {
        QProcess process;
        process.start(QStringLiteral("gzip"), {QStringLiteral("-nc1")});
        process.write(plain);
        process.closeWriteChannel();
        EXPECT_TRUE(process.waitForFinished(60'000)) << "gzip does not end";
        return process.readAllStandardOutput();
    }

private:
    QByteArray bytes;
};

} // namespace pelloran::testing
