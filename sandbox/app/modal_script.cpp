#include "modal_script.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDialog>
#include <QDir>
#include <QRadioButton>
#include <QWidget>

namespace sandbox {
namespace {

// Polls before a dialog is pictured, so that it is laid out and painted.
constexpr int kSettleTicks = 3;
// Polls after which a dialog that is still up counts as stuck (about ten seconds).
constexpr int kStuckTicks = 250;

} // namespace

ModalScript::ModalScript(const QString& shotFolder, QObject* parent)
    : QObject(parent), m_folder(shotFolder)
{
    m_timer.setInterval(40);
    connect(&m_timer, &QTimer::timeout, this, &ModalScript::poll);
    m_timer.start();
}

void ModalScript::expect(const QString& shot, Answer answer)
{
    m_expected.push_back({shot, std::move(answer)});
}

int ModalScript::takeUnanswered()
{
    const int count = static_cast<int>(m_expected.size());
    m_expected.clear();
    return count;
}

QStringList ModalScript::takeProblems()
{
    QStringList problems;
    problems.swap(m_problems);
    return problems;
}

ModalScript::Answer ModalScript::click(const QString& objectName)
{
    return [objectName](QWidget* dialog) {
        if (auto* button = dialog->findChild<QAbstractButton*>(objectName)) button->click();
    };
}

ModalScript::Answer ModalScript::check(const QString& radioName, const QString& thenClick)
{
    return [radioName, thenClick](QWidget* dialog) {
        if (auto* radio = dialog->findChild<QRadioButton*>(radioName)) radio->setChecked(true);
        click(thenClick)(dialog);
    };
}

ModalScript::Answer ModalScript::close()
{
    return [](QWidget* dialog) { dialog->close(); };
}

void ModalScript::poll()
{
    QWidget* modal = QApplication::activeModalWidget();
    if (!modal || !modal->isVisible()) return;
    if (modal != m_current) {
        m_current = modal;
        m_ticksSeen = 0;
    }
    ++m_ticksSeen;
    if (m_ticksSeen == kSettleTicks) {
        if (m_expected.empty()) {
            m_problems << QStringLiteral("unexpected dialog \"%1\"").arg(modal->windowTitle());
            modal->close();
            return;
        }
        Expected next = std::move(m_expected.front());
        m_expected.pop_front();
        if (!next.shot.isEmpty()) {
            const QString file = QDir(m_folder).filePath(next.shot + QStringLiteral(".png"));
            if (modal->grab().save(file))
                m_shots << file;
            else
                m_problems << QStringLiteral("could not save %1").arg(file);
        }
        next.answer(modal);
    } else if (m_ticksSeen == kStuckTicks) {
        m_problems << QStringLiteral("dialog \"%1\" did not close after its answer")
                          .arg(modal->windowTitle());
        if (auto* dialog = qobject_cast<QDialog*>(modal))
            dialog->reject();
        else
            modal->close();
    }
}

} // namespace sandbox
