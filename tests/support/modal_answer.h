#pragma once

// Plays the user for a dialog run modally by the code under test: once a modal dialog is up,
// the given answer runs on it (once). What the answer saw is kept by the test's lambda.

#include <QApplication>
#include <QPointer>
#include <QTimer>
#include <QWidget>

#include <functional>

class ModalAnswer : public QObject
{
public:
    explicit ModalAnswer(std::function<void(QWidget*)> answer) : m_answer(std::move(answer))
    {
        connect(&m_timer, &QTimer::timeout, this, [this] {
            QWidget* modal = QApplication::activeModalWidget();
            if (!modal || !modal->isVisible() || m_answered) return;
            m_answered = true;
            m_seen = modal;
            m_answer(modal);
        });
        m_timer.start(20);
    }
    bool answered() const { return m_answered; }

private:
    std::function<void(QWidget*)> m_answer;
    QTimer m_timer;
    QPointer<QWidget> m_seen;
    bool m_answered = false;
};
