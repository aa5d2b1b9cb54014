#include "cli/cli.h"

extern const Command kDemoCommand;
extern const Command kCertCommand;
extern const Command kAsnCommand;
extern const Command kSm3Command;
extern const Command kHmacSm3Command;
extern const Command kVerifyCommand;
extern const Command kValidityCommand;
extern const Command kSigCommand;
extern const Command kB64Command;
extern const Command kGbkCommand;
extern const Command kSealCommand;
extern const Command kOfdCommand;

namespace {

const Command* const kCommands[] = {
    &kDemoCommand, &kCertCommand, &kAsnCommand, &kSm3Command, &kHmacSm3Command, &kVerifyCommand,
    &kValidityCommand, &kSigCommand, &kB64Command, &kGbkCommand, &kSealCommand, &kOfdCommand, nullptr,
};

}  // namespace

const Command* const* commandTable() {
    return kCommands;
}

const Command* findCommand(const QString& name) {
    for (const Command* const* command = kCommands; *command != nullptr; ++command) {
        if (name == QLatin1String((*command)->name))
            return *command;
    }
    return nullptr;
}
