#pragma once

#include <QCommandLineParser>
#include <QString>
#include <QStringList>

namespace ussctl {

// The options of one subcommand. parse() turns every mistake into a usage error that names
// the command, and --help into its help text on stdout with exit code 0.
class CommandLine
{
public:
    CommandLine(const QString& command, const QString& syntax, const QString& description);

    void addOption(const QCommandLineOption& option);
    // args excludes the program and command names.
    void parse(const QStringList& args, int minPositional, int maxPositional);

    bool isSet(const QString& name) const { return m_parser.isSet(name); }
    QString value(const QString& name) const { return m_parser.value(name); }
    QStringList positional() const { return m_parser.positionalArguments(); }
    // A whole non-negative number option, or the fallback when absent.
    qint64 number(const QString& name, qint64 fallback) const;
    QString help() const;

private:
    [[noreturn]] void usageError(const QString& text) const;

    QString m_command;
    QString m_syntax;
    QString m_description;
    QCommandLineParser m_parser;
};

} // namespace ussctl
