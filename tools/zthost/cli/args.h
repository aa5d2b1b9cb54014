// Command-line parsing for one command: options with or without a value,
// then positional arguments.
#ifndef ZTHOST_ARGS_H
#define ZTHOST_ARGS_H

#include <QHash>
#include <QString>
#include <QStringList>
#include <initializer_list>

struct OptionSpec {
    const char* name;  // "--key-hex", "-o"
    bool takesValue;
    const char* alias = nullptr;  // another spelling ("-in" for "--data")
};

class Args {
public:
    // Parses `args` against `options` (plus --help and -h, which throw a
    // HelpRequest carrying `usage`). "--name=value" is accepted for options
    // with a value, "--" ends the options and "-" is a positional argument.
    // An alias counts as its option's name. Unknown options and missing
    // values throw UsageError.
    Args(const QStringList& args, const char* usage, std::initializer_list<OptionSpec> options);

    bool has(const char* name) const;
    // The last value given (options may be repeated).
    QString value(const char* name, const QString& fallback = QString()) const;
    // Every value given, in order.
    QStringList values(const char* name) const;
    // The value of an option that must be given.
    QString required(const char* name) const;

    const QStringList& positionals() const { return positionals_; }
    // Exactly `count` positional arguments, named `what` in the message.
    void expectPositionals(int count, const char* what) const;
    void expectPositionalsBetween(int least, int most, const char* what) const;

private:
    QHash<QString, QStringList> values_;
    QStringList positionals_;
};

#endif
