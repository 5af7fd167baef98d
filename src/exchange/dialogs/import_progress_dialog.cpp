#include "import_progress_dialog.h"

#include "exchangetexts.h"
#include "importworker.h"

#include "look/look.h"

#include <QCloseEvent>
#include <QLabel>
#include <QProgressBar>
#include <QVBoxLayout>

namespace exchange {

ImportProgressDialog::ImportProgressDialog(ImportWorker& worker, QWidget* parent, Question question)
    : QDialog(parent), m_worker(worker), m_question(std::move(question))
{
    if (!m_question) {
        m_question = [](QWidget* parent, const QString& text) {
            return qt::message_box::warning(parent, QString(), text, QMessageBox::Ok,
                                            QMessageBox::Cancel);
        };
    }
    setWindowTitle(texts::importCaption());
    setObjectName(QStringLiteral("ImportProgressDialog"));
    setModal(true);

    m_label = new QLabel(QStringLiteral("Импорт пользовательских элементов..."), this);
    m_label->setObjectName(QStringLiteral("progressLabel"));
    m_bar = new QProgressBar(this);
    m_bar->setObjectName(QStringLiteral("progressBar"));
    m_bar->setRange(0, worker.total());
    m_bar->setValue(0);
    m_bar->setMinimumWidth(360);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_label);
    layout->addWidget(m_bar);

    // Queued: the worker reports from its thread.
    connect(&worker, &ImportWorker::progress, m_bar, &QProgressBar::setValue);
    connect(&worker, &ImportWorker::finished, this, &ImportProgressDialog::OnFinished);

    setWindowFlags(windowFlags() | Qt::FramelessWindowHint | Qt::WindowCloseButtonHint);
    qt::attach_styled_frame(this);
}

QString ImportProgressDialog::questionText()
{
    return QStringLiteral("Вы действительно хотите прервать импорт пользовательских элементов?");
}

int ImportProgressDialog::run()
{
    m_worker.start();
    return exec();
}

void ImportProgressDialog::OnFinished()
{
    m_finished = true;
    // A question still open closes the dialog when it is answered.
    if (!m_asking) close();
}

void ImportProgressDialog::reject()
{
    // Escape.
    if (m_finished) {
        QDialog::reject();
        return;
    }
    requestStop();
}

void ImportProgressDialog::closeEvent(QCloseEvent* event)
{
    if (m_finished) {
        event->accept();
        QDialog::closeEvent(event);
        return;
    }
    event->ignore();
    requestStop();
}

void ImportProgressDialog::requestStop()
{
    if (m_asking) return;
    m_worker.setState(ImportWorker::Pause);
    const int done = qMax(m_bar->value(), m_worker.done());
    // The last record is under way: stopping would save nothing.
    if (done >= m_worker.total() - 1) {
        m_worker.setState(ImportWorker::Run);
        return;
    }
    m_asking = true;
    const QMessageBox::StandardButton answer = m_question(this, questionText());
    m_asking = false;
    // Only Cancel stops; every other answer, OK included, goes on.
    m_worker.setState(answer == QMessageBox::Cancel ? ImportWorker::Stop : ImportWorker::Run);
    if (m_finished) close();
}

} // namespace exchange
