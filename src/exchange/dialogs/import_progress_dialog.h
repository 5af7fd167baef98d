#pragma once

#include <QDialog>
#include <QMessageBox>

#include <functional>

class QLabel;
class QProgressBar;

namespace exchange {

class ImportWorker;

// Shows the worker's progress while it writes on the thread pool, and lets the user pause it
// with a question: Escape, or closing the window before the worker has finished, pauses the
// work and asks whether to stop, unless only the last record is left. The worker's finish
// closes the dialog.
//
//   ImportProgressDialog progress(worker, parent);
//   progress.run();   // starts the worker, then runs the dialog
//   worker.wait();
class ImportProgressDialog : public QDialog
{
    Q_OBJECT
public:
    // The answer to "stop the import?"; the library's message box by default.
    using Question =
        std::function<QMessageBox::StandardButton(QWidget* parent, const QString& text)>;

    explicit ImportProgressDialog(ImportWorker& worker, QWidget* parent = nullptr,
                                  Question question = {});

    // Starts the worker on the global thread pool, then runs the dialog until it finishes.
    int run();

    QProgressBar* bar() const { return m_bar; }
    bool finished() const { return m_finished; }

    static QString questionText();

public slots:
    void OnFinished();
    void reject() override;

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    // Pauses the worker and asks, unless the last record is under way.
    void requestStop();

    ImportWorker& m_worker;
    Question m_question;
    QProgressBar* m_bar = nullptr;
    QLabel* m_label = nullptr;
    bool m_finished = false;
    bool m_asking = false;
};

} // namespace exchange
