#pragma once

#include "tests/support/StaticServer.h"

#include <QByteArray>
#include <QString>

#include <array>

namespace pelloran::soak {

// A configuration server with two publications of the figures that ship, of which one is raised. It is a process of its
// own, so that nothing of it is measured.
class DataServer {
public:
    // False when the server does not start or nothing can be published. `folder` is for its files.
    bool start(const QString& folder);

    QString url() const { return server.url(); }

    // What clients find from now on.
    void serve(std::size_t publication);
    void serveNothing();

private:
    QString manifestPath() const;

    testing::StaticServer server;
    std::array<QByteArray, 2> manifests;
};

} // namespace pelloran::soak
