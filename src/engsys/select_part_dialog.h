#pragma once

#include <QDialog>
#include <QList>
#include <QStringList>

class QRadioButton;
class QPushButton;
class QVBoxLayout;

// Choice of the current section of a drawing: one radio button per section.
class SelectPartDialog : public QDialog
{
    Q_OBJECT
public:
    // Shows parts in order and checks the first one named curPart exactly (none when no
    // section has that name). Each section beyond the second makes the dialog taller by half
    // its initial height, keeping it centred where it was.
    SelectPartDialog(const QStringList& parts, const QString& curPart, QWidget* parent = nullptr);

    // Text of the first checked section in display order; empty when none is checked.
    QString chosenPart() const;
    // The section buttons in display order (hidden design-time ones included).
    const QList<QRadioButton*>& partButtons() const { return m_partButtons; }

    static constexpr int kInitialWidth = 280;
    static constexpr int kInitialHeight = 120;

private:
    void grow(int extra);

    QVBoxLayout* m_partButtonsLayout = nullptr;
    QPushButton* m_okButton = nullptr;
    QList<QRadioButton*> m_partButtons;
};
