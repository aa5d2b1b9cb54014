// The subcommands of `zthost seal`.
#ifndef ZTHOST_SEAL_COMMANDS_H
#define ZTHOST_SEAL_COMMANDS_H

#include <QStringList>

#include "readers/seal_structure.h"

class Context;

int runSealBuild(Context& context, SealFormat format, const QStringList& args);
int runSealVerify(Context& context, const QStringList& args);

#endif
