#pragma once

#include "catalog/notify.h"

#include <QString>

namespace ussctl {

// Prints what the cores tell the user on stderr, one message a line group, and remembers
// whether anything went wrong so that the exit code can say so.
class StderrMessenger : public edw::IMessenger
{
public:
    void information(const QString& title, const QString& text) override;
    void warning(const QString& title, const QString& text) override;
    void critical(const QString& title, const QString& text) override;

    bool hadWarning() const { return m_warnings > 0; }
    bool hadError() const { return m_errors > 0; }
    QString lastText() const { return m_last; }

private:
    void print(const QString& level, const QString& title, const QString& text);

    int m_warnings = 0;
    int m_errors = 0;
    QString m_last;
};

// Installs a messenger for the lifetime of the guard.
class MessengerGuard
{
public:
    explicit MessengerGuard(edw::IMessenger* messenger);
    ~MessengerGuard();
    MessengerGuard(const MessengerGuard&) = delete;
    MessengerGuard& operator=(const MessengerGuard&) = delete;
};

} // namespace ussctl
