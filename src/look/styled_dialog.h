#pragma once

#include <QObject>
#include <QPointer>
#include <QString>

class QFrame;
class QLabel;
class QPushButton;
class QWidget;
class QWindow;

namespace qt {

class resizable_frame;

// Owner and event filter of the frame parts of one dialog: the outer border, the title bar
// with its label and close cross. Not a widget itself; lives as a Qt child of the dialog.
class styled_dialog : public QObject
{
    Q_OBJECT
public:
    // Builds the frame around the existing layout of `widget` and sets the style sheet of the
    // variant. Does not touch the widget's window flags or style (attach_styled_frame does).
    styled_dialog(bool dark, QWidget* widget, const QString& closeIcon = {});
    ~styled_dialog() override;

    QWidget* target() const;
    QFrame* titleBar() const;
    QLabel* titleLabel() const;
    QPushButton* closeButton() const;
    resizable_frame* border() const;
    bool dark() const { return m_dark; }

    // Presses closer than this to the top of the title bar belong to the resize band.
    static constexpr int kResizeBand = 6;
    static constexpr int kTitleBarHeight = 22;
    static constexpr int kCloseButtonSize = 22;

signals:
    void titlebarButtonClicked();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    // Starts the window manager's move of the dialog's window; returns whether it began.
    virtual bool beginSystemMove(QWindow* window);

private:
    void onCloseClicked();
    void onTitleChanged(const QString& title);

    QPointer<QWidget> m_target;
    QPointer<QFrame> m_titleBar;
    QPointer<QLabel> m_titleLabel;
    QPointer<QPushButton> m_closeButton;
    QPointer<resizable_frame> m_border;
    QString m_closeIcon;
    bool m_dark = false;
};

} // namespace qt
