#pragma once

#include <QProcess>

#include <sys/prctl.h>

#include <csignal>

namespace pelloran::testing {

// To be called before the process starts: a test that crashes takes it along.
inline void endWithParent(QProcess& process) {
    process.setChildProcessModifier([] { prctl(PR_SET_PDEATHSIG, SIGKILL); });
}

} // namespace pelloran::testing
