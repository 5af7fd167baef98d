#include "stderrmessenger.h"

#include "common.h"

namespace ussctl {

void StderrMessenger::information(const QString& title, const QString& text)
{
    print(QString(), title, text);
}

void StderrMessenger::warning(const QString& title, const QString& text)
{
    ++m_warnings;
    print("warning: ", title, text);
}

void StderrMessenger::critical(const QString& title, const QString& text)
{
    ++m_errors;
    print("error: ", title, text);
}

void StderrMessenger::print(const QString& level, const QString& title, const QString& text)
{
    m_last = text;
    // A single blank is the title of input warnings: nothing worth printing.
    const QString heading = title.trimmed().isEmpty() ? QString() : title.trimmed() + ": ";
    const QString line = forTerminal(text);
    if (heading.isEmpty() && alreadyPrinted(line)) return;
    err(level + heading + line + "\n");
    noteMessage(line);
}

MessengerGuard::MessengerGuard(edw::IMessenger* messenger)
{
    edw::setMessenger(messenger);
}

MessengerGuard::~MessengerGuard()
{
    edw::setMessenger(nullptr);
}

} // namespace ussctl
