#pragma once

#include <QObject>
#include <QPointer>
#include <QStringList>
#include <QTimer>

#include <deque>
#include <functional>

class QWidget;

namespace sandbox {

// Plays the user of the library's modal dialogs: when a modal dialog comes up it saves a
// picture of it and gives the next scripted answer (usually a click on a button found by its
// object name). A dialog nobody expected, or one that does not go away after its answer, is
// closed and reported.
class ModalScript : public QObject
{
    Q_OBJECT
public:
    using Answer = std::function<void(QWidget* dialog)>;

    explicit ModalScript(const QString& shotFolder, QObject* parent = nullptr);

    // The next modal dialog is pictured as "<shot>.png" (no picture for an empty name) and
    // answered by answer.
    void expect(const QString& shot, Answer answer);
    // Answers still waiting for their dialog; forgets them.
    int takeUnanswered();
    // What went wrong since the last call; forgets it.
    QStringList takeProblems();
    QStringList shots() const { return m_shots; }

    // Answers.
    static Answer click(const QString& objectName);
    static Answer check(const QString& radioName, const QString& thenClick);
    static Answer close();

private:
    void poll();

    struct Expected
    {
        QString shot;
        Answer answer;
    };
    QString m_folder;
    QTimer m_timer;
    std::deque<Expected> m_expected;
    QPointer<QWidget> m_current;
    int m_ticksSeen = 0;
    QStringList m_problems;
    QStringList m_shots;
};

} // namespace sandbox
