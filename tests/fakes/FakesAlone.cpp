// Compiles every fake as a program without the test framework would.
#include "tests/fakes/FakeAlerts.h"
#include "tests/fakes/FakeApplicationFiles.h"
#include "tests/fakes/FakeApplicationPresence.h"
#include "tests/fakes/FakeBrowser.h"
#include "tests/fakes/FakeHttpClient.h"
#include "tests/fakes/FakeLineReader.h"
#include "tests/fakes/FakeOverlay.h"
#include "tests/fakes/FakePanelWindow.h"
#include "tests/fakes/FakeStatusItem.h"
#include "tests/fakes/FakeSystemSettings.h"
#include "tests/fakes/FakeTextReader.h"
#include "tests/fakes/FakeUserDefaults.h"
#include "tests/fakes/FakeWindowServer.h"
#include "tests/fakes/ManualQueue.h"

#if defined(GTEST_TEST) || defined(GMOCK_VERSION) || defined(EXPECT_TRUE)
#error "a fake needs the test framework"
#endif
