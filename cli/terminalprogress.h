#pragma once

#include "catalog/notify.h"

#include <QElapsedTimer>
#include <QString>

namespace ussctl {

// A one-line progress bar on stderr, drawn only when stderr is a terminal so that logs and
// test output stay clean.
class TerminalProgress : public edw::IProgress
{
public:
    // enabled false draws nothing whatever stderr is.
    explicit TerminalProgress(bool enabled);
    static bool stderrIsTerminal();

    void begin(const QString& caption, int maximum) override;
    void setValue(int value) override;
    void end() override;

private:
    void draw(bool force);

    bool m_enabled;
    bool m_active = false;
    QString m_caption;
    int m_maximum = 0;
    int m_value = 0;
    int m_drawnPermille = -1;
    QElapsedTimer m_sinceDraw;
};

} // namespace ussctl
