#include "notify.h"

#include <QDebug>

#include <atomic>

namespace edw {

namespace {

// Without an installed messenger the texts still leave a trace in the debug log.
class DebugMessenger : public IMessenger
{
public:
    void information(const QString& title, const QString& text) override
    {
        qInfo().noquote() << title << text;
    }
    void warning(const QString& title, const QString& text) override
    {
        qWarning().noquote() << title << text;
    }
    void critical(const QString& title, const QString& text) override
    {
        qCritical().noquote() << title << text;
    }
};

class NullProgress : public IProgress
{
public:
    void begin(const QString&, int) override {}
    void setValue(int) override {}
    void end() override {}
};

std::atomic<IMessenger*> installed{nullptr};

} // namespace

IMessenger& messenger()
{
    static DebugMessenger fallback;
    IMessenger* current = installed.load();
    return current ? *current : fallback;
}

void setMessenger(IMessenger* messenger)
{
    installed.store(messenger);
}

IProgress& nullProgress()
{
    static NullProgress progress;
    return progress;
}

} // namespace edw
