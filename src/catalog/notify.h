#pragma once

#include <QString>

namespace edw {

// Where the catalog, exchange and editor cores send what the user must be told. Dialogs
// install one that shows the library's message box; the command line prints; tests record.
class IMessenger
{
public:
    virtual ~IMessenger() = default;
    virtual void information(const QString& title, const QString& text) = 0;
    // Warnings about the user's input carry a single blank as title.
    virtual void warning(const QString& title, const QString& text) = 0;
    virtual void critical(const QString& title, const QString& text) = 0;
};

// Progress of a long operation. The host's indicator, a terminal bar or a test recorder.
class IProgress
{
public:
    virtual ~IProgress() = default;
    virtual void begin(const QString& caption, int maximum) = 0;
    virtual void setValue(int value) = 0;
    // Called now and then during long work so that the host can process pending messages.
    virtual void keepAlive() {}
    virtual void end() = 0;
};

// The messenger in force for this process; without one installed, messages go to the Qt
// debug log. Not owned; the installer keeps it alive while installed.
IMessenger& messenger();
void setMessenger(IMessenger* messenger);

// A progress that shows nothing.
IProgress& nullProgress();

} // namespace edw
