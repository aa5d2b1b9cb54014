#include "cli/args.h"

#include "cli/cli.h"

namespace {

const OptionSpec* findOption(std::initializer_list<OptionSpec> options, const QString& name) {
    for (const OptionSpec& option : options) {
        if (name == QLatin1String(option.name) || (option.alias != nullptr && name == QLatin1String(option.alias)))
            return &option;
    }
    return nullptr;
}

}  // namespace

Args::Args(const QStringList& args, const char* usage, std::initializer_list<OptionSpec> options) {
    bool optionsEnded = false;
    for (int i = 0; i < args.size(); ++i) {
        const QString& arg = args.at(i);
        if (optionsEnded || arg == QLatin1String("-") || !arg.startsWith(QLatin1Char('-'))) {
            positionals_.append(arg);
            continue;
        }
        if (arg == QLatin1String("--")) {
            optionsEnded = true;
            continue;
        }
        if (arg == QLatin1String("--help") || arg == QLatin1String("-h"))
            throw HelpRequest{usage};
        const int equals = arg.startsWith(QLatin1String("--")) ? arg.indexOf(QLatin1Char('=')) : -1;
        const QString name = equals < 0 ? arg : arg.left(equals);
        const OptionSpec* option = findOption(options, name);
        if (option == nullptr)
            throw UsageError(QStringLiteral("unknown option %1").arg(name));
        QStringList& given = values_[QLatin1String(option->name)];
        if (!option->takesValue) {
            if (equals >= 0)
                throw UsageError(QStringLiteral("%1 takes no value").arg(name));
            given.append(QString());
            continue;
        }
        if (equals >= 0) {
            given.append(arg.mid(equals + 1));
        } else if (i + 1 < args.size()) {
            given.append(args.at(++i));
        } else {
            throw UsageError(QStringLiteral("%1 needs a value").arg(name));
        }
    }
}

bool Args::has(const char* name) const {
    return values_.contains(QLatin1String(name));
}

QString Args::value(const char* name, const QString& fallback) const {
    const QStringList given = values(name);
    return given.isEmpty() ? fallback : given.last();
}

QStringList Args::values(const char* name) const {
    return values_.value(QLatin1String(name));
}

QString Args::required(const char* name) const {
    if (!has(name))
        throw UsageError(QStringLiteral("missing %1").arg(QLatin1String(name)));
    return value(name);
}

void Args::expectPositionals(int count, const char* what) const {
    expectPositionalsBetween(count, count, what);
}

void Args::expectPositionalsBetween(int least, int most, const char* what) const {
    if (positionals_.size() < least)
        throw UsageError(QStringLiteral("missing %1").arg(QLatin1String(what)));
    if (positionals_.size() > most)
        throw UsageError(QStringLiteral("unexpected argument %1").arg(positionals_.at(most)));
}
