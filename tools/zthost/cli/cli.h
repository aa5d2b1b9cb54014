// The frame every zthost command runs in: exit statuses, the errors that end
// a command, the command table and the per-run context.
#ifndef ZTHOST_CLI_H
#define ZTHOST_CLI_H

#include <QString>
#include <QStringList>
#include <memory>

#include "readers/format_error.h"

class HostSession;

// Exit statuses: success, failed verification or bad data, usage error.
enum ExitStatus { kExitOk = 0, kExitFailed = 1, kExitUsage = 2 };

// Ends the command with `status`; `message` becomes one line on standard
// error, "zthost: <command>: <message>".
struct CommandFailure {
    CommandFailure(int status, QString message) : status(status), message(std::move(message)) {}
    int status;
    QString message;
};

// Runs `read`, a structure reader; the FormatError it may throw ends the
// command (status 1) as "SOURCE: message".
template <typename Read>
auto readOrFail(const QString& source, Read read) -> decltype(read()) {
    try {
        return read();
    } catch (const FormatError& error) {
        throw CommandFailure(kExitFailed, QStringLiteral("%1: %2").arg(source, error.message));
    }
}

// A piece of the library that this build does not have (an exported
// function, a component): status 1, and the demo skips the step instead.
struct MissingPiece : CommandFailure {
    explicit MissingPiece(QString message) : CommandFailure(kExitFailed, std::move(message)) {}
};

// A usage error (status 2): the line is followed by a hint to --help.
struct UsageError : CommandFailure {
    explicit UsageError(QString message) : CommandFailure(kExitUsage, std::move(message)) {}
};

// Thrown by the argument parser on --help: the text is printed, status 0.
struct HelpRequest {
    const char* usage;
};

// Options that hold for the whole run.
struct RunOptions {
    QString libraryPath;  // --lib, empty for the default search
    bool verbose = false;  // --verbose: show the library's own messages
};

// What a command reaches: the host session (the library is loaded on first
// use, so --help works without it) and the run options.
class Context {
public:
    explicit Context(RunOptions options);
    ~Context();
    Context(const Context&) = delete;
    Context& operator=(const Context&) = delete;

    HostSession& session();
    const RunOptions& options() const { return options_; }

    // The command as messages name it ("seal gm"); subcommands extend it.
    const QString& commandPath() const { return commandPath_; }
    void setCommandPath(const QString& path) { commandPath_ = path; }

private:
    RunOptions options_;
    QString commandPath_;
    std::unique_ptr<HostSession> session_;
};

struct Command {
    const char* name;
    const char* summary;  // one line for the tool's --help
    const char* usage;    // the command's --help text
    int (*run)(Context& context, const QStringList& args);
};

// A command whose only subcommand is `name`: --help shows `usage`, anything
// else is a usage error; the command path becomes "COMMAND NAME".
int runSingleSubcommand(Context& context, const QStringList& args, const char* usage, const char* name,
                        int (*run)(Context& context, const QStringList& args));

// The commands in the order --help lists them.
const Command* const* commandTable();
const Command* findCommand(const QString& name);

#endif
