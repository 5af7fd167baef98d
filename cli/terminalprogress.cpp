#include "terminalprogress.h"

#include "common.h"

#include <unistd.h>

#include <algorithm>

namespace ussctl {

TerminalProgress::TerminalProgress(bool enabled) : m_enabled(enabled)
{}

bool TerminalProgress::stderrIsTerminal()
{
    return isatty(STDERR_FILENO) == 1;
}

void TerminalProgress::begin(const QString& caption, int maximum)
{
    m_caption = caption;
    m_maximum = std::max(maximum, 0);
    m_value = 0;
    m_drawnPermille = -1;
    m_active = true;
    m_sinceDraw.start();
    draw(true);
}

void TerminalProgress::setValue(int value)
{
    m_value = std::clamp(value, 0, std::max(m_maximum, 0));
    draw(false);
}

void TerminalProgress::end()
{
    if (!m_active) return;
    m_value = m_maximum;
    draw(true);
    if (m_enabled) err("\n");
    m_active = false;
}

void TerminalProgress::draw(bool force)
{
    if (!m_enabled || !m_active) return;
    const int permille = m_maximum > 0 ? int(qint64(m_value) * 1000 / m_maximum) : 1000;
    // Redraw on a visible change, at most ten times a second.
    if (!force && (permille == m_drawnPermille || m_sinceDraw.elapsed() < 100)) return;
    m_drawnPermille = permille;
    m_sinceDraw.restart();
    constexpr int width = 30;
    const int filled = permille * width / 1000;
    const QString bar = QString(filled, QChar('#')) + QString(width - filled, QChar(' '));
    err(QString("\r%1 [%2] %3% (%4/%5)")
            .arg(m_caption, bar)
            .arg(permille / 10, 3)
            .arg(m_value)
            .arg(m_maximum));
}

} // namespace ussctl
