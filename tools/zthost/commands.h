// The zthost commands.
#ifndef ZTHOST_COMMANDS_H
#define ZTHOST_COMMANDS_H

#include <QStringList>

class HostSession;

// Exit statuses shared by every command.
enum ExitStatus { kExitOk = 0, kExitFailed = 1, kExitUsage = 2 };

// The end-to-end tour of the library.
int runDemo(HostSession& session, const QStringList& args);

#endif
