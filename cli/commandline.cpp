#include "commandline.h"

#include "common.h"

namespace ussctl {

CommandLine::CommandLine(const QString& command, const QString& syntax, const QString& description)
    : m_command(command), m_syntax(syntax), m_description(description)
{
    m_parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    m_parser.addOption(QCommandLineOption({"h", "help"}, "Show this help."));
}

void CommandLine::addOption(const QCommandLineOption& option)
{
    m_parser.addOption(option);
}

void CommandLine::usageError(const QString& text) const
{
    throw CommandError(ExitUsage,
                       QString("ussctl %1: %2\nTry 'ussctl %1 --help'.").arg(m_command, text));
}

void CommandLine::parse(const QStringList& args, int minPositional, int maxPositional)
{
    // QCommandLineParser skips the first argument as the program name.
    if (!m_parser.parse(QStringList{"ussctl"} + args)) usageError(m_parser.errorText());
    if (m_parser.isSet("help")) throw CommandError(ExitOk, help());
    const qsizetype count = m_parser.positionalArguments().size();
    if (count < minPositional) usageError("missing arguments");
    if (maxPositional >= 0 && count > maxPositional) {
        usageError(QString("unexpected argument '%1'")
                       .arg(m_parser.positionalArguments().at(maxPositional)));
    }
}

qint64 CommandLine::number(const QString& name, qint64 fallback) const
{
    if (!m_parser.isSet(name)) return fallback;
    bool ok = false;
    const qint64 value = m_parser.value(name).toLongLong(&ok);
    if (!ok || value < 0)
        usageError(QString("--%1 needs a whole number, not '%2'").arg(name, m_parser.value(name)));
    return value;
}

QString CommandLine::help() const
{
    // Qt's own help starts with a usage line that names the program as invoked; ours names
    // the command, so the text stays the same wherever ussctl is installed.
    QString text = m_parser.helpText();
    const qsizetype options = text.indexOf("Options:");
    text = options >= 0 ? text.mid(options) : QString();
    return QString("Usage: ussctl %1 %2\n\n%3\n\n%4").arg(m_command, m_syntax, m_description, text);
}

} // namespace ussctl
