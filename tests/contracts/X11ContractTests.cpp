// The contracts on displays with an X server.
#include "tests/contracts/WindowServerContract.h"
#include "tests/platform/x11/X11Test.h"

#include <QProcess>
#include <QProcessEnvironment>

namespace pelloran::testing {

namespace {

using ::testing::Values;

struct Display {
    std::unique_ptr<VirtualDisplay> server = VirtualDisplay::start();
    TestClient client{server->name()};
};

// Without windows, or with one of each kind.
ServedDisplay x11Display(bool withWindows) {
    if (!VirtualDisplay::isInstalled()) {
        return {};
    }
    auto display = std::make_shared<Display>();
    qputenv("DISPLAY", display->server->name());
    if (withWindows) {
        display->client.create({});
        display->client.create({.bounds = {0, 0, 100, 50}, .border = 4});
        display->client.create({.overrideRedirect = true});
        display->client.create({.mapped = false});
    }
    return {display, WindowServer::create()};
}

INSTANTIATE_TEST_SUITE_P(X11, WindowServerContract,
                         Values(BackEnd<ServedDisplay>{"WithoutWindows", [] { return x11Display(false); }},
                                BackEnd<ServedDisplay>{"WithWindows", [] { return x11Display(true); }},
                                BackEnd<ServedDisplay>{"WithoutADisplay",
                                                       [] {
                                                           qputenv("DISPLAY", ":64999");
                                                           return ServedDisplay{{}, WindowServer::create()};
                                                       }},
                                BackEnd<ServedDisplay>{"OfALostDisplay",
                                                       [] {
                                                           ServedDisplay lost = x11Display(true);
                                                           if (lost.server) {
                                                               lost.server->describeWindows(WindowListing::all);
                                                               lost.owned.reset();
                                                           }
                                                           return lost;
                                                       }}),
                         nameOfBackEnd);

// The panel, its alerts and its status item with Qt on a display; elsewhere they are tried on a screen in memory.
TEST_F(ManagedX11Test, WhatShowsItselfKeepsItsContractsOnADisplayToo) {
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("DISPLAY"), QString::fromLatin1(display->name()));
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));
    environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), QStringLiteral("disabled:")); // whoever runs there
    QProcess contracts;
    contracts.setProcessEnvironment(environment);
    contracts.setProcessChannelMode(QProcess::MergedChannels);
    contracts.start(QStringLiteral(PELLORAN_WIDGET_CONTRACTS), QStringList());
    ASSERT_TRUE(contracts.waitForFinished(200'000)) << contracts.readAll().toStdString();
    EXPECT_EQ(contracts.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(contracts.exitCode(), 0) << contracts.readAll().toStdString();
}

} // namespace

} // namespace pelloran::testing
