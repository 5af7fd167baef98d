#pragma once

// Plays the user for the dialogs run modally by the code under test: each newly shown modal
// widget gets the next answer, once. A dialog shown again after a message it raised counts as
// new. What the answers saw is kept by the test's lambdas.

#include <QApplication>
#include <QPointer>
#include <QTimer>
#include <QWidget>

#include <deque>
#include <functional>

class ModalAnswer : public QObject
{
public:
    using Answer = std::function<void(QWidget*)>;
    explicit ModalAnswer(Answer answer)
        : ModalAnswer(std::initializer_list<Answer>{std::move(answer)})
    {}
    explicit ModalAnswer(std::initializer_list<Answer> answers) : m_answers(answers)
    {
        connect(&m_timer, &QTimer::timeout, this, [this] {
            QWidget* modal = QApplication::activeModalWidget();
            if (!modal || !modal->isVisible() || modal == m_last || m_answers.empty()) return;
            m_last = modal;
            Answer next = std::move(m_answers.front());
            m_answers.pop_front();
            next(modal);
            QTimer::singleShot(0, this, [this, modal] {
                if (QApplication::activeModalWidget() != modal) m_last = nullptr;
            });
        });
        m_timer.start(20);
    }
    // Every answer was given.
    bool answered() const { return m_answers.empty(); }

private:
    std::deque<Answer> m_answers;
    QTimer m_timer;
    QPointer<QWidget> m_last;
};
