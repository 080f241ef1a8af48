#pragma once

#include <QFile>
#include <QProcess>
#include <QSsl>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QSslKey>
#include <QTemporaryDir>

#include <optional>

namespace pelloran::testing {

enum class CertificateKind { valid, expired, ofAnotherHost };

struct TestCertificate {
    QSslCertificate issuer;   // whoever trusts it trusts the server's; the server's own, but for an expired one
    QSslConfiguration server; // of a server on loopback that shows the certificate
};

// Made by the openssl program; absent where there is none.
inline std::optional<TestCertificate> makeCertificate(CertificateKind kind) {
    const QTemporaryDir folder;
    const auto write = [&](const char* name, const QByteArray& bytes) {
        QFile file(folder.filePath(QString::fromUtf8(name)));
        return file.open(QFile::WriteOnly) && file.write(bytes) == bytes.size();
    };
    const auto openssl = [&](const char* arguments) {
        QProcess process;
        process.setWorkingDirectory(folder.path());
        process.start(QStringLiteral("openssl"), QString::fromUtf8(arguments).split(u' '));
        return process.waitForStarted() && process.waitForFinished() && process.exitCode() == 0;
    };
    const QByteArray host = kind == CertificateKind::ofAnotherHost ? "DNS:other.example" : "IP:127.0.0.1";
    const QByteArray configuration =
        "[ca]\ndefault_ca=it\n[it]\ndatabase=index\nserial=serial\nnew_certs_dir=.\ndefault_md=sha256\npolicy=any\n"
        "x509_extensions=extensions\n[any]\ncommonName=supplied\n[extensions]\nbasicConstraints=CA:TRUE\n"
        "subjectAltName=" +
        host + "\n[req]\ndistinguished_name=name\n[name]\n";
    bool made = write("index", {}) && write("serial", "01\n") && write("configuration", configuration) &&
                openssl("req -config configuration -new -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes "
                        "-subj /CN=issuer -keyout issuer.key -out request") &&
                // Only this tool sets dates.
                openssl("ca -config configuration -selfsign -batch -notext -keyfile issuer.key "
                        "-startdate 20200101000000Z -enddate 21200101000000Z -in request -out issuer");
    QString name = QStringLiteral("issuer");
    if (kind == CertificateKind::expired) { // of one that issues itself it would be the issuer that is not trusted
        name = QStringLiteral("expired");
        made = made &&
               openssl("req -config configuration -new -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes "
                       "-subj /CN=expired -keyout expired.key -out request") &&
               openssl("ca -config configuration -batch -notext -cert issuer -keyfile issuer.key "
                       "-startdate 20200101000000Z -enddate 20200102000000Z -in request -out expired");
    }
    QFile key(folder.filePath(name + QStringLiteral(".key")));
    if (!made || !key.open(QFile::ReadOnly)) {
        return std::nullopt;
    }
    QSslConfiguration server = QSslConfiguration::defaultConfiguration();
    server.setLocalCertificate(QSslCertificate::fromPath(folder.filePath(name)).value(0));
    server.setPrivateKey(QSslKey(&key, QSsl::Ec));
    return TestCertificate{QSslCertificate::fromPath(folder.filePath(QStringLiteral("issuer"))).value(0), server};
}

} // namespace pelloran::testing
