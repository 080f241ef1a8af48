#include "update/AppUpdateChecker.h"

#include "localisation/AppLanguage.h"
#include "tests/fakes/FakeHttpClient.h"
#include "tests/fakes/FakeUserDefaults.h"
#include "tests/fakes/ManualQueue.h"
#include "tests/support/Printing.h"
#include "tests/update/ResultPrinting.h"
#include "tests/update/SkippedKey.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QObject>
#include <QTest>
#include <QThread>

#include <gtest/gtest.h>

#include <atomic>

using namespace Qt::StringLiterals;

namespace pelloran {

namespace {

using Result = AppUpdateCheckResult;

class AppUpdateCheckerTest : public ::testing::Test {
protected:
    ~AppUpdateCheckerTest() override { AppLanguage::configure(nullptr, nullptr); }

    AppUpdateChecker checkerOf(const QString& version, const QString& base = u"https://u.example/download"_s) {
        return {{http, defaults, queue}, {.version = version, .build = std::nullopt}, base};
    }

    void serve(const QByteArray& body, int status = 200) { http.answer(latest, status, body); }

    static AppReleaseInfo release(const QString& version, std::optional<bool> force = std::nullopt) {
        AppReleaseInfo made;
        made.version = version;
        made.force = force;
        return made;
    }

    static QByteArray json(const AppReleaseInfo& release) {
        QJsonObject object{{u"version"_s, release.version}};
        if (release.force) {
            object[u"force"_s] = *release.force;
        }
        return QJsonDocument(object).toJson();
    }

    // What the decoder says of a body it cannot use.
    static QString decoderOn(const QByteArray& body) { return AppReleaseInfo::decode(body).error().description; }

    const QString latest = u"https://u.example/download/latest.json"_s;
    testing::FakeHttpClient http;
    testing::FakeUserDefaults defaults;
    testing::ManualQueue queue;
};

TEST_F(AppUpdateCheckerTest, KnowsTheRunningProgram) {
    struct Case {
        const char* why;
        std::optional<QString> version;
        std::optional<QString> build;
        QString localVersion;
        QString localBuild;
    };

    const auto none = std::nullopt;
    const Case cases[] = {
        {"both", u"1.2"_s, u"34"_s, u"1.2"_s, u"34"_s},
        {"the version alone", u"1.2"_s, none, u"1.2"_s, u"?"_s},
        {"the build alone", none, u"34"_s, u"34"_s, u"34"_s},
        {"an empty version", u""_s, u"34"_s, u"34"_s, u"34"_s},
        {"an empty build", u"1.2"_s, u""_s, u"1.2"_s, u""_s},
        {"both empty", u""_s, u""_s, u"0"_s, u""_s},
        {"neither", none, none, u"0"_s, u"?"_s},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        const AppUpdateChecker checker({http, defaults, queue}, {c.version, c.build}, u"https://u.example"_s);
        EXPECT_EQ(checker.localVersion(), c.localVersion);
        EXPECT_EQ(checker.localBuild(), c.localBuild);
    }
}

TEST_F(AppUpdateCheckerTest, RemembersTheSkippedVersion) {
    const AppUpdateChecker checker = checkerOf(u"1"_s);
    EXPECT_EQ(checker.skippedVersion(), std::nullopt);
    checker.setSkippedVersion(u" 1.3 "_s);
    EXPECT_EQ(checker.skippedVersion(), u" 1.3 "_s);
    EXPECT_EQ(defaults.string(skippedKey), u" 1.3 "_s);
    EXPECT_EQ(checkerOf(u"2"_s).skippedVersion(), u" 1.3 "_s);

    checker.setSkippedVersion(std::nullopt);
    EXPECT_EQ(defaults.string(skippedKey), std::nullopt);
    checker.setSkippedVersion(u"1.4"_s);
    checker.setSkippedVersion(u""_s);
    EXPECT_EQ(defaults.string(skippedKey), std::nullopt) << "an empty version forgets";

    defaults.setString(skippedKey, u""_s);
    EXPECT_EQ(checker.skippedVersion(), std::nullopt) << "an empty version stored by others is none";
}

TEST_F(AppUpdateCheckerTest, ComparesTheRunningVersionWithTheServers) {
    struct Case {
        const char* why;
        QString local;
        AppReleaseInfo remote;
        std::optional<QString> skipped;
        Result expected;
        std::optional<QString> skippedAfterwards;
    };

    const auto none = std::nullopt;
    const Case cases[] = {
        {"the same, written longer",
         u"1.2"_s,
         release(u"1.2.0"_s),
         none,
         {Result::UpToDate{u"1.2"_s, u"1.2.0"_s}},
         none},
        {"ahead of the server", u"2.0"_s, release(u"1.9"_s), none, {Result::UpToDate{u"2.0"_s, u"1.9"_s}}, none},
        {"the remote version is shown trimmed",
         u"2.0"_s,
         release(u" 1.9\n"_s),
         none,
         {Result::UpToDate{u"2.0"_s, u"1.9"_s}},
         none},
        {"newer by number, not by text",
         u"1.9"_s,
         release(u"1.10"_s),
         none,
         {Result::Available{u"1.9"_s, release(u"1.10"_s)}},
         none},
        {"a newer release is kept as the server gave it",
         u"1.9"_s,
         release(u"\t1.10 "_s),
         none,
         {Result::Available{u"1.9"_s, release(u"\t1.10 "_s)}},
         none},
        {"an unknown running version is the oldest",
         u""_s,
         release(u"0.0.1"_s),
         none,
         {Result::Available{u"0"_s, release(u"0.0.1"_s)}},
         none},
        {"a remote version without numbers is no news",
         u"0.1"_s,
         release(u"latest"_s),
         none,
         {Result::UpToDate{u"0.1"_s, u"latest"_s}},
         none},
        {"skipped",
         u"1.2"_s,
         release(u"1.3"_s),
         u"1.3"_s,
         {Result::SkippedVersion{u"1.2"_s, release(u"1.3"_s)}},
         u"1.3"_s},
        {"skipped, written longer",
         u"1.2"_s,
         release(u"1.3.0"_s),
         u"1.3"_s,
         {Result::SkippedVersion{u"1.2"_s, release(u"1.3.0"_s)}},
         u"1.3"_s},
        {"what is not forced can be skipped",
         u"1.2"_s,
         release(u"1.3"_s, false),
         u"1.3"_s,
         {Result::SkippedVersion{u"1.2"_s, release(u"1.3"_s, false)}},
         u"1.3"_s},
        {"skipped but forced",
         u"1.2"_s,
         release(u"1.3.0"_s, true),
         u"1.3"_s,
         {Result::Available{u"1.2"_s, release(u"1.3.0"_s, true)}},
         u"1.3"_s},
        {"an older one was skipped",
         u"1.2"_s,
         release(u"1.4"_s),
         u"1.3"_s,
         {Result::Available{u"1.2"_s, release(u"1.4"_s)}},
         u"1.3"_s},
        {"a newer one was skipped and withdrawn",
         u"1.2"_s,
         release(u"1.3"_s),
         u"1.4"_s,
         {Result::Available{u"1.2"_s, release(u"1.3"_s)}},
         u"1.4"_s},
        {"up to date forgets another skipped version",
         u"1.4"_s,
         release(u"1.4"_s),
         u"1.3"_s,
         {Result::UpToDate{u"1.4"_s, u"1.4"_s}},
         none},
        {"also a newer one", u"1.4"_s, release(u"1.4"_s), u"1.5"_s, {Result::UpToDate{u"1.4"_s, u"1.4"_s}}, none},
        {"up to date keeps the skipped version that it is",
         u"1.4"_s,
         release(u"1.4"_s),
         u"1.4"_s,
         {Result::UpToDate{u"1.4"_s, u"1.4"_s}},
         u"1.4"_s},
        {"written otherwise",
         u"1.4"_s,
         release(u"1.4"_s),
         u"1.4.0"_s,
         {Result::UpToDate{u"1.4"_s, u"1.4"_s}},
         u"1.4.0"_s},
        {"an empty skipped version is none",
         u"1.2"_s,
         release(u"1.3"_s),
         u""_s,
         {Result::Available{u"1.2"_s, release(u"1.3"_s)}},
         u""_s},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        defaults.remove(skippedKey);
        if (c.skipped) {
            defaults.setString(skippedKey, *c.skipped);
        }
        serve(json(c.remote));
        EXPECT_EQ(checkerOf(c.local).checkNow(), c.expected);
        EXPECT_EQ(defaults.string(skippedKey), c.skippedAfterwards);
    }
}

TEST_F(AppUpdateCheckerTest, AReleaseWithoutAVersionFails) {
    defaults.setString(skippedKey, u"1.3"_s);
    for (const QString& version : {u""_s, u" \t\n"_s}) {
        EXPECT_EQ(checkerOf(u"1.2"_s).evaluate(release(version)),
                  Result{Result::Failed{u"Invalid remote latest.json"_s}});
    }
    AppLanguage::overridePreference(AppLanguage::zh);
    EXPECT_EQ(checkerOf(u"1.2"_s).evaluate(release({})), Result{Result::Failed{u"远端 latest.json 无效"_s}});
    EXPECT_EQ(defaults.string(skippedKey), u"1.3"_s);
}

TEST_F(AppUpdateCheckerTest, EveryFailureIsOfflineWithItsReason) {
    struct Case {
        const char* why;
        int status;
        QByteArray body;
        QString english;
        QString chinese;
    };

    const QString noVersionChinese = u"远端 latest.json 无效"_s;
    const QString noVersion = u"Invalid remote latest.json"_s;
    const Case cases[] = {
        {"not there", 404, "<html>", u"Update server HTTP 404"_s, u"更新服务 HTTP 404"_s},
        {"broken", 500, R"({"version": "9"})", u"Update server HTTP 500"_s, u"更新服务 HTTP 500"_s},
        {"one below the good ones", 199, R"({"version": "9"})", u"Update server HTTP 199"_s, u"更新服务 HTTP 199"_s},
        {"one above them", 300, R"({"version": "9"})", u"Update server HTTP 300"_s, u"更新服务 HTTP 300"_s},
        {"not modified, though nothing is kept", 304, "", u"Update server HTTP 304"_s, u"更新服务 HTTP 304"_s},
        {"an empty body is read like any other", 204, "", decoderOn(""), decoderOn("")},
        {"a page", 200, "<html>", decoderOn("<html>"), decoderOn("<html>")},
        {"another type", 200, R"({"version": "9", "build": "12"})", u"build is not a whole number"_s,
         u"build is not a whole number"_s},
        {"an empty version", 200, R"({"version": ""})", noVersion, noVersionChinese},
        {"a version of spaces", 200, R"({"version": "  "})", noVersion, noVersionChinese},
        {"a version of any white space", 200, R"({"version": "\u3000\u00a0\n\t\u2028"})", noVersion, noVersionChinese},
    };
    defaults.setString(skippedKey, u"1.3"_s);
    const AppUpdateChecker checker = checkerOf(u"1.2"_s);
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        serve(c.body, c.status);
        AppLanguage::overridePreference(AppLanguage::en);
        EXPECT_EQ(checker.checkNow(), Result{Result::Offline{c.english}});
        AppLanguage::overridePreference(AppLanguage::zh);
        EXPECT_EQ(checker.checkNow(), Result{Result::Offline{c.chinese}});
    }
    http.fail(latest, u"Socket operation timed out"_s);
    EXPECT_EQ(checker.checkNow(), Result{Result::Offline{u"Socket operation timed out"_s}}) << "in the system's words";
    EXPECT_EQ(defaults.string(skippedKey), u"1.3"_s) << "what was not learned changes nothing";
}

TEST_F(AppUpdateCheckerTest, TakesAnyGoodStatus) {
    for (const int status : {200, 201, 206, 299}) {
        serve(json(release(u"1"_s)), status);
        EXPECT_EQ(checkerOf(u"1"_s).checkNow(), (Result{Result::UpToDate{u"1"_s, u"1"_s}})) << status;
    }
}

TEST_F(AppUpdateCheckerTest, AsksOnceForOneFileWithBoundedWaits) {
    http.fail(latest, u"no route"_s);
    checkerOf(u"1"_s).checkNow();
    ASSERT_EQ(http.requests.size(), 1U) << "nothing is tried twice";
    const HttpClient::Request& request = http.requests.front();
    EXPECT_EQ(request.url.toString(), latest);
    EXPECT_EQ(request.accept, "application/json");
    EXPECT_EQ(request.transferTimeout, std::chrono::seconds(10));
    EXPECT_EQ(request.deadline, std::chrono::seconds(12));
    EXPECT_EQ(request.maximumBytes, 1024 * 1024);
}

TEST_F(AppUpdateCheckerTest, AFileTooLongToBeOneIsNotTaken) {
    serve("{\"version\": \"2\", \"notes\": \"" + QByteArray(1024 * 1024, 'x') + "\"}");
    EXPECT_TRUE(std::holds_alternative<Result::Offline>(checkerOf(u"1"_s).checkNow().outcome));
}

TEST_F(AppUpdateCheckerTest, AnAddressThatIsNoneIsNotAsked) {
    for (const QString& base : {u"https://u example/download"_s, u"https://u.example:x/download"_s, u"http://[::1"_s}) {
        SCOPED_TRACE(base.toStdString());
        AppLanguage::overridePreference(AppLanguage::en);
        EXPECT_EQ(checkerOf(u"1"_s, base).checkNow(), Result{Result::Offline{u"Invalid update server URL"_s}});
        AppLanguage::overridePreference(AppLanguage::zh);
        EXPECT_EQ(checkerOf(u"1"_s, base).checkNow(), Result{Result::Offline{u"更新服务 URL 无效"_s}});
    }
    EXPECT_TRUE(http.requests.empty());
}

TEST_F(AppUpdateCheckerTest, ARelativeAddressFailsWhenItIsAsked) {
    EXPECT_EQ(checkerOf(u"1"_s, u"download"_s).checkNow(), Result{Result::Offline{u"Connection refused"_s}});
    ASSERT_EQ(http.requests.size(), 1U);
    EXPECT_EQ(http.requests.front().url.toString(), u"download/latest.json"_s);
}

TEST_F(AppUpdateCheckerTest, TheBaseIsTakenAsItIs) {
    const AppUpdateChecker checker = checkerOf(u"1"_s, u"https://u.example//download"_s);
    EXPECT_EQ(checker.downloadBaseURLString(), u"https://u.example//download"_s);
    checker.checkNow();
    ASSERT_EQ(http.requests.size(), 1U);
    EXPECT_EQ(http.requests.front().url.toString(), u"https://u.example//download/latest.json"_s);
}

TEST_F(AppUpdateCheckerTest, AnUpdateIsWhatCouldBeInstalled) {
    EXPECT_FALSE((Result{Result::UpToDate{u"1"_s, u"1"_s}}).hasUpdate());
    EXPECT_TRUE((Result{Result::Available{u"1"_s, release(u"2"_s)}}).hasUpdate());
    EXPECT_TRUE((Result{Result::SkippedVersion{u"1"_s, release(u"2"_s)}}).hasUpdate());
    EXPECT_FALSE(Result{Result::Offline{u"x"_s}}.hasUpdate());
    EXPECT_FALSE(Result{Result::Failed{u"x"_s}}.hasUpdate());
}

TEST_F(AppUpdateCheckerTest, ResultsSpeakToTheUser) {
    struct Case {
        Result result;
        QString english;
        QString chinese;
    };

    const Case cases[] = {
        {{Result::UpToDate{u"1.2"_s, u"1.1"_s}},
         u"You’re already on the latest version.\nLocal 1.2 · Remote 1.1"_s,
         u"当前已是最新版本。\n本地 1.2 · 远端 1.1"_s},
        {{Result::Available{u"1.2"_s, release(u"1.3"_s)}},
         u"You have 1.2; latest is 1.3.\nDownload the update now?"_s,
         u"当前版本 1.2，最新版本 1.3。\n是否立即下载更新？"_s},
        {{Result::SkippedVersion{u"1.2"_s, release(u"1.3"_s)}},
         u"You skipped version 1.3.\nLocal 1.2. Use the menu to check again."_s,
         u"你已选择跳过版本 1.3。\n本地 1.2 · 可在菜单中再次检查更新。"_s},
        {{Result::Offline{u"no %@ route"_s}},
         u"Could not reach the update server: no %@ route"_s,
         u"暂时无法连接更新服务器：no %@ route"_s},
        {{Result::Failed{u"as it is"_s}}, u"as it is"_s, u"as it is"_s},
    };
    for (const Case& c : cases) {
        AppLanguage::overridePreference(AppLanguage::en);
        EXPECT_EQ(c.result.userMessage(), c.english);
        AppLanguage::overridePreference(AppLanguage::zh);
        EXPECT_EQ(c.result.userMessage(), c.chinese);
    }
}

TEST_F(AppUpdateCheckerTest, ResultsAreEqualCaseByCaseAndPayloadByPayload) {
    const Result results[] = {
        {Result::UpToDate{u"1"_s, u"2"_s}},
        {Result::UpToDate{u"2"_s, u"1"_s}},
        {Result::Available{u"1"_s, release(u"2"_s)}},
        {Result::Available{u"1"_s, release(u"2"_s, false)}},
        {Result::Available{u"2"_s, release(u"2"_s)}},
        {Result::SkippedVersion{u"1"_s, release(u"2"_s)}},
        {Result::SkippedVersion{u"1"_s, release(u"2.0"_s)}},
        {Result::Offline{u"x"_s}},
        {Result::Offline{u"y"_s}},
        {Result::Failed{u"x"_s}},
        {Result::Failed{u"y"_s}},
    };
    for (std::size_t a = 0; a < std::size(results); ++a) {
        for (std::size_t b = 0; b < std::size(results); ++b) {
            EXPECT_EQ(results[a] == results[b], a == b) << a << " and " << b;
        }
    }
}

TEST_F(AppUpdateCheckerTest, DeliversLater) {
    serve(json(release(u"2"_s)));
    QObject receiver;
    std::vector<Result> delivered;
    checkerOf(u"1"_s).checkAsync(&receiver, [&](const Result& result) { delivered.push_back(result); });
    EXPECT_TRUE(http.requests.empty()) << "not on the caller's time";
    ASSERT_EQ(queue.waiting(), 1U);
    queue.finishNext(); // the checker is gone by now
    ASSERT_EQ(delivered.size(), 1U);
    EXPECT_EQ(delivered.front(), (Result{Result::Available{u"1"_s, release(u"2"_s)}}));
}

TEST_F(AppUpdateCheckerTest, DeliversNothingToADeletedReceiver) {
    auto receiver = std::make_unique<QObject>();
    checkerOf(u"1"_s).checkAsync(receiver.get(), [](const Result&) { ADD_FAILURE() << "delivered"; });
    receiver.reset();
    queue.finishNext();
    EXPECT_EQ(http.requests.size(), 1U);
}

TEST_F(AppUpdateCheckerTest, OverlappingChecksAnswerOnTheirOwn) {
    const AppUpdateChecker checker = checkerOf(u"1"_s);
    QObject receiver;
    std::vector<Result> delivered;
    const auto keep = [&](const Result& result) { delivered.push_back(result); };
    checker.checkAsync(&receiver, keep);
    checker.checkAsync(&receiver, keep);
    serve(json(release(u"2"_s)));
    queue.finishNext();
    serve("", 503);
    queue.finishNext();
    EXPECT_EQ(delivered, (std::vector<Result>{{Result::Available{u"1"_s, release(u"2"_s)}},
                                              {Result::Offline{u"Update server HTTP 503"_s}}}));
}

TEST_F(AppUpdateCheckerTest, WaitsOnTheQueuesThreadAndAnswersOnOurs) {
    serve(json(release(u"2"_s)));
    std::atomic<const QThread*> waitedOn = nullptr;
    http.onRequest = [&](const HttpClient::Request&) { waitedOn = QThread::currentThread(); };
    const auto threaded = SerialQueue::create(AppUpdateChecker::workQueueLabel.toString());
    const AppUpdateChecker checker({http, defaults, *threaded}, {u"1"_s, {}}, u"https://u.example/download"_s);
    QObject receiver;
    const QThread* answeredOn = nullptr;
    checker.checkAsync(&receiver, [&](const Result& result) {
        EXPECT_TRUE(result.hasUpdate());
        answeredOn = QThread::currentThread();
    });
    ASSERT_TRUE(QTest::qWaitFor([&] { return answeredOn != nullptr; }, 10'000));
    EXPECT_EQ(answeredOn, QThread::currentThread());
    EXPECT_NE(waitedOn, nullptr);
    EXPECT_NE(waitedOn, QThread::currentThread());
}

} // namespace

} // namespace pelloran
