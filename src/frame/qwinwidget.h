#pragma once

// Parents Qt dialogs to a native window of the host: the host window is disabled while a
// modal child runs, and gets focus and activation back when the child goes.

#include <QWidget>

class QWinWidget : public QWidget
{
    Q_OBJECT
public:
    // parentWindow: native handle of the host window, never owned; 0 makes an ordinary
    // top-level widget. qtParent is not used.
    explicit QWinWidget(quintptr parentWindow, QObject* qtParent = nullptr,
                        Qt::WindowFlags flags = {});
    ~QWinWidget() override;

    quintptr parentWindow() const { return m_parentWindow; }
    // Native window that had focus when the first child window was shown; 0 until then.
    quintptr previousFocus() const { return m_previousFocus; }

protected:
    void childEvent(QChildEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    bool focusNextPrevChild(bool next) override;
    bool nativeEvent(const QByteArray& eventType, void* message, qintptr* result) override;

private:
    void restoreParent();

    quintptr m_parentWindow = 0;
    quintptr m_previousFocus = 0;
    bool m_reenableParent = false;
};
