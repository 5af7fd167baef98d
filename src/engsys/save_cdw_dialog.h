#pragma once

#include <QDialog>

class QCommandLinkButton;

// What to do with a drawing that already exists: update it (1), create another one (2) or
// stop getting data from the IFC file (3).
class SaveCdwDialog : public QDialog
{
    Q_OBJECT
public:
    enum Choice
    {
        NoChoice = 0,
        Reload = 1,
        Create = 2,
        Cancel = 3
    };

    // path: the existing drawing; the title names its file.
    explicit SaveCdwDialog(const QString& path, QWidget* parent = nullptr);

    // 0 until a button is pressed or the dialog is closed; closing counts as Cancel.
    int choice() const { return m_choice; }

public slots:
    void reject() override;

private:
    void choose(int choice);
    QCommandLinkButton* addChoice(const char* objectName, const QString& text,
                                  const QString& description, int choice);

    int m_choice = NoChoice;
};
