#include "tests/program/ProgramTest.h"
#include "tests/support/Printing.h"
#include "tests/support/TarWriter.h"

#include <QCryptographicHash>
#include <QFile>

#include <gtest/gtest.h>

// One sync, and one look for a newer version, against servers of this machine.
namespace pelloran {
namespace {

using testing::ProgramOutput;
using testing::ScriptedServer;

// A port of this machine that nobody listens on.
const QString nobody = QStringLiteral("http://127.0.0.1:1");

TEST_F(ProgramTest, TellsThatASyncFailed) {
    const ProgramOutput answer = run({QStringLiteral("sync"), QStringLiteral("--config-server"), nobody});
    EXPECT_EQ(answer.exitCode, 1);
    const auto lines = answer.lines();
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0][QStringLiteral("result")].toString(), QStringLiteral("failed"));
    EXPECT_FALSE(lines[0][QStringLiteral("message")].toString().isEmpty());
    EXPECT_EQ(lines[0][QStringLiteral("userMessage")].toString(),
              QStringLiteral("Config sync failed; using local/bundled data: ") +
                  lines[0][QStringLiteral("message")].toString());
}

TEST_F(ProgramTest, BringsTheDataFilesUpToDate) {
    testing::TarWriter writer;
    writer.add({.name = "winrates/all_classes_LAST_7_DAYS.json",
                .content = R"({"cards": [{"card_id": "NEW", "name_en": "New Card"}]})"});
    const QByteArray bundle = writer.gzipped();
    const QByteArray digest = QCryptographicHash::hash(bundle, QCryptographicHash::Sha256).toHex();
    ScriptedServer server;
    server.on("/pelloran/latest/manifest.json",
              ok(R"({"hash": "feedbeefcafe", "bundle": "b.tar.gz", "bundle_sha256": ")" + digest + R"("})"));
    server.on("/pelloran/latest/b.tar.gz", ok(bundle));

    const ProgramOutput first = sync(server);
    EXPECT_EQ(first.exitCode, 0);
    EXPECT_EQ(first.standardError, "");
    EXPECT_EQ(first.lines(), (std::vector<QJsonObject>{
                                 {{QStringLiteral("result"), QStringLiteral("updated")},
                                  {QStringLiteral("hash"), QStringLiteral("feedbeefcafe")},
                                  {QStringLiteral("userMessage"), QStringLiteral("Config updated (feedbeef…)")}}}));
    EXPECT_TRUE(QFileInfo::exists(path("data/Pelloran/config/winrates/all_classes_LAST_7_DAYS.json")));
    EXPECT_EQ(server.requests().size(), 2U);

    const ProgramOutput second = sync(server);
    EXPECT_EQ(second.exitCode, 0);
    EXPECT_EQ(second.lines(), (std::vector<QJsonObject>{{{QStringLiteral("result"), QStringLiteral("upToDate")},
                                                         {QStringLiteral("hash"), QStringLiteral("feedbeefcafe")},
                                                         {QStringLiteral("userMessage"),
                                                          QStringLiteral("Config is up to date (feedbeef…)")}}}));
    EXPECT_EQ(server.requests().size(), 3U) << "one small request while nothing has changed";

    const auto match = run({QStringLiteral("match"), QStringLiteral("New Card")}).lines();
    ASSERT_EQ(match.size(), 1U);
    EXPECT_EQ(match[0][QStringLiteral("match")][QStringLiteral("cardId")].toString(), QStringLiteral("NEW"));

    server.on("/pelloran/latest/manifest.json", ScriptedServer::answer("503 Service Unavailable", {}, ""));
    const ProgramOutput third = sync(server);
    EXPECT_EQ(third.exitCode, 1);
    EXPECT_EQ(third.lines(),
              (std::vector<QJsonObject>{{{QStringLiteral("result"), QStringLiteral("skippedOffline")},
                                         {QStringLiteral("localHash"), QStringLiteral("feedbeefcafe")},
                                         {QStringLiteral("reason"), QStringLiteral("Config server HTTP 503")},
                                         {QStringLiteral("userMessage"),
                                          QStringLiteral("Offline, using local config: Config server HTTP 503")}}}));
}

TEST_F(ProgramTest, TellsWhetherThereIsAnUpdate) {
    const QString local = version();
    const auto result = [](const ProgramOutput& answer) {
        const auto lines = answer.lines();
        EXPECT_EQ(answer.standardError, "");
        EXPECT_EQ(lines.size(), 1U);
        return lines.empty() ? QJsonObject() : lines.front();
    };
    ScriptedServer server;
    const QByteArray latest = "/download/latest.json";

    server.on(latest, ok(R"({"version": "999.1", "dmg": "pkg/a b.dmg", "zip": "pkg/a.zip", "force": false,
                             "arch": ["x86_64"], "build": 7, "notes": ""})"));
    const QJsonObject release{
        {QStringLiteral("name"), QJsonValue::Null},
        {QStringLiteral("version"), QStringLiteral("999.1")},
        {QStringLiteral("build"), 7},
        {QStringLiteral("minMacos"), QJsonValue::Null},
        {QStringLiteral("arch"), QJsonArray{QStringLiteral("x86_64")}},
        {QStringLiteral("dmg"), QStringLiteral("pkg/a b.dmg")},
        {QStringLiteral("zip"), QStringLiteral("pkg/a.zip")},
        {QStringLiteral("baseURL"), QJsonValue::Null},
        {QStringLiteral("notes"), QString()},
        {QStringLiteral("notesZh"), QJsonValue::Null},
        {QStringLiteral("notesEn"), QJsonValue::Null},
        {QStringLiteral("publishedAt"), QJsonValue::Null},
        {QStringLiteral("force"), false},
        {QStringLiteral("download"), QString(server.base() + QStringLiteral("/download/pkg/a.zip"))},
    };
    ProgramOutput answer = checkUpdate(server);
    EXPECT_EQ(answer.exitCode, 0);
    EXPECT_EQ(result(answer),
              (QJsonObject{{QStringLiteral("result"), QStringLiteral("available")},
                           {QStringLiteral("local"), local},
                           {QStringLiteral("release"), release},
                           {QStringLiteral("hasUpdate"), true},
                           {QStringLiteral("userMessage"),
                            QStringLiteral("You have %1; latest is 999.1.\nDownload the update now?").arg(local)}}));

    write("config/Pelloran/Pelloran.ini", "[General]\npelloran.skippedAppVersion=999.1.0\n");
    answer = checkUpdate(server);
    EXPECT_EQ(answer.exitCode, 0);
    EXPECT_EQ(result(answer),
              (QJsonObject{
                  {QStringLiteral("result"), QStringLiteral("skippedVersion")},
                  {QStringLiteral("local"), local},
                  {QStringLiteral("release"), release},
                  {QStringLiteral("hasUpdate"), true},
                  {QStringLiteral("userMessage"),
                   QStringLiteral("You skipped version 999.1.\nLocal %1. Use the menu to check again.").arg(local)}}));

    server.on(latest, ok(R"({"version": " 0.0.1 "})"));
    answer = checkUpdate(server);
    EXPECT_EQ(answer.exitCode, 0);
    EXPECT_EQ(
        result(answer),
        (QJsonObject{{QStringLiteral("result"), QStringLiteral("upToDate")},
                     {QStringLiteral("local"), local},
                     {QStringLiteral("remote"), QStringLiteral("0.0.1")},
                     {QStringLiteral("hasUpdate"), false},
                     {QStringLiteral("userMessage"),
                      QStringLiteral("You’re already on the latest version.\nLocal %1 · Remote 0.0.1").arg(local)}}));
    QFile choices(path("config/Pelloran/Pelloran.ini"));
    ASSERT_TRUE(choices.open(QIODevice::ReadOnly));
    EXPECT_FALSE(choices.readAll().contains("skippedAppVersion")) << "another version was skipped";

    server.on(latest, ScriptedServer::answer("404 Not Found", {}, "<html>"));
    answer = checkUpdate(server);
    EXPECT_EQ(answer.exitCode, 1);
    EXPECT_EQ(result(answer),
              (QJsonObject{{QStringLiteral("result"), QStringLiteral("offline")},
                           {QStringLiteral("reason"), QStringLiteral("Update server HTTP 404")},
                           {QStringLiteral("hasUpdate"), false},
                           {QStringLiteral("userMessage"),
                            QStringLiteral("Could not reach the update server: Update server HTTP 404")}}));
    EXPECT_EQ(server.requests().size(), 4U);
}

TEST_F(ProgramTest, TellsThatNobodyKnowsOfAnUpdate) {
    const ProgramOutput answer = run({QStringLiteral("check-update"), QStringLiteral("--update-server"), nobody});
    EXPECT_EQ(answer.exitCode, 1);
    const auto lines = answer.lines();
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0][QStringLiteral("result")].toString(), QStringLiteral("offline"));
    EXPECT_FALSE(lines[0][QStringLiteral("hasUpdate")].toBool(true));
}

} // namespace
} // namespace pelloran
