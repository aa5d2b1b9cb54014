// The subcommands of `zthost seal`.
#ifndef ZTHOST_SEAL_COMMANDS_H
#define ZTHOST_SEAL_COMMANDS_H

#include <QStringList>

class Context;

// The library builds GM (GetGMSignInfo) or government-affairs (GetZWSignInfo) structures.
enum class SealFormat { Gm, Zw };

int runSealBuild(Context& context, SealFormat format, const QStringList& args);
int runSealVerify(Context& context, const QStringList& args);
int runSealShow(Context& context, const QStringList& args);

#endif
