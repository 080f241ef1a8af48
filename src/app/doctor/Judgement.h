#pragma once

#include "app/doctor/Facts.h"
#include "app/doctor/Finding.h"

#include <vector>

// From what was found to what it means for a player. Plain functions.
namespace pelloran::doctor {

Finding judge(const LogsFacts& facts);
Finding judge(const LogConfigFacts& facts);
Finding judge(const WindowFacts& facts);
Finding judge(const ReaderFacts& facts);
Finding judge(const DataFacts& facts);
Finding judge(const NamesFacts& facts);
Finding judge(const ServerFacts& facts);
Finding judge(const InstanceFacts& facts);
Finding judge(const FoldersFacts& facts);

// Display, fonts, compositor and status area.
std::vector<Finding> judge(const DesktopFacts& facts);

// Where even looking at the desktop ended the program; `said` is what it had to say.
Finding noDesktop(const QString& said);

// Of a check that did not come to its end.
Finding unfinished(const QString& check, std::chrono::seconds waited);
Finding broken(const QString& check, const QString& why);

// Of the names the check goes by.
namespace checks {

extern const QString logs;
extern const QString logConfig;
extern const QString window;
extern const QString reader;
extern const QString data;
extern const QString names;
extern const QString desktop;
extern const QString configServer;
extern const QString updateServer;
extern const QString instance;
extern const QString folders;

} // namespace checks

} // namespace pelloran::doctor
