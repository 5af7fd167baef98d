#pragma once

#include "marlouss/export.h"

#include <QPointF>

// The host's point request record; the panel never looks inside it.
struct RequestInfoW;

// Waits for the user to pick a point in the host's drawing. While it waits it is the single
// current panel, and the host's point-request callback (CallBackP) hands the picked point to
// it.
class SelectionPanel
{
public:
    SelectionPanel() = default;
    ~SelectionPanel();
    SelectionPanel(const SelectionPanel&) = delete;
    SelectionPanel& operator=(const SelectionPanel&) = delete;

    // Becomes the current panel and forgets an earlier point.
    void beginWaiting();
    // Stops being the current panel; the point picked so far stays.
    void endWaiting();
    bool isWaiting() const;

    bool isPicked() const { return m_picked; }
    QPointF point() const { return m_point; }

    // The panel that waits for a point now, or null.
    static SelectionPanel* current();

    // The host's point-request callback. A non-zero last argument is returned as it is and
    // nothing else happens; otherwise the waiting panel (when there is one) takes *x and *y as
    // its picked point. Returns 0 then.
    MARLOUSS_API static int CallBackP(int, double* x, double* y, RequestInfoW*, void*, int result);

private:
    bool m_picked = false;
    QPointF m_point;
};
