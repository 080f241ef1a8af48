// The back ends of a system for which there is none yet. Compiled in: their library has the same create() functions as
// the real ones, and is not built beside them. What such a build reads pictures with is no more than its refusal.
#include "tests/contracts/PanelWindowContract.h"
#include "tests/contracts/SystemSettingsContract.h"
#include "tests/contracts/TextReaderContract.h"
#include "tests/contracts/WindowServerContract.h"
#include "tests/fakes/FakeApplicationFiles.h"

namespace pelloran::testing {

namespace {

using ::testing::Values;

INSTANTIATE_TEST_SUITE_P(Null, PanelWindowContract,
                         Values(BackEnd<std::unique_ptr<PanelWindow>>{"Null", PanelWindow::create}), nameOfBackEnd);

INSTANTIATE_TEST_SUITE_P(Null, WindowServerContract,
                         Values(BackEnd<ServedDisplay>{"Null",
                                                       [] { return ServedDisplay{{}, WindowServer::create()}; }}),
                         nameOfBackEnd);

INSTANTIATE_TEST_SUITE_P(Null, SystemSettingsContract,
                         Values(BackEnd<ChangedSettings>{
                             "Null", [] { return ChangedSettings{{}, SystemSettings::create(), {}, {}}; }}),
                         nameOfBackEnd);

INSTANTIATE_TEST_SUITE_P(Null, TextReaderContract,
                         Values(BackEnd<ReadScreen>{
                             "Null",
                             [] { return ReadScreen{TextReader::create(FakeApplicationFiles(QString())), {}, {}}; }}),
                         nameOfBackEnd);

TEST(NullWindowServer, RefusesEverything) {
    const auto server = WindowServer::create();
    EXPECT_FALSE(server->describeWindows(WindowListing::onScreen));
    EXPECT_FALSE(server->describeWindows(WindowListing::all));
    EXPECT_FALSE(server->image(1));
    EXPECT_EQ(server->permission(), CapturePermission::denied);
}

} // namespace

} // namespace pelloran::testing
