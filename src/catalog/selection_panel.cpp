#include "selection_panel.h"

#include <atomic>

namespace {
std::atomic<SelectionPanel*> waitingPanel{nullptr};
} // namespace

SelectionPanel::~SelectionPanel()
{
    endWaiting();
}

void SelectionPanel::beginWaiting()
{
    m_picked = false;
    m_point = QPointF();
    waitingPanel.store(this);
}

void SelectionPanel::endWaiting()
{
    SelectionPanel* self = this;
    waitingPanel.compare_exchange_strong(self, nullptr);
}

bool SelectionPanel::isWaiting() const
{
    return waitingPanel.load() == this;
}

SelectionPanel* SelectionPanel::current()
{
    return waitingPanel.load();
}

int SelectionPanel::CallBackP(int, double* x, double* y, RequestInfoW*, void*, int result)
{
    if (result != 0) return result;
    if (SelectionPanel* panel = waitingPanel.load()) {
        panel->m_picked = true;
        panel->m_point = QPointF(x ? *x : 0.0, y ? *y : 0.0);
    }
    return 0;
}
