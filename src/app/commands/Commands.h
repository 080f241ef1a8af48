#pragma once

#include "app/CommandLine.h"

// The commands that show one part at work: each prints its answer on standard output and diagnostics on standard error,
// and gives the exit code (0: done, 1: failed). None needs a display; all need the application object.
namespace pelloran {

struct Finding;

// Each is in the file of its name on the command line.
int run(const PrintDraftState& command);
int run(const PrintLogsDir& command);
int run(const RecognizeImages& command);
int run(const EvaluateFolders& command);
int run(const MatchTexts& command);
int run(const SyncOnce& command);
int run(const CheckUpdateOnce& command);
int run(const PublishData& command);
int run(const DescribeRelease& command);
int run(const ExamineMachine& command);
int run(const ReplayRecording& command);
int run(const PrintText& command);

// What the parts of `doctor` print of each check.
void printFinding(const Finding& finding, bool asJson);

} // namespace pelloran
