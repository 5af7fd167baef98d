#pragma once

// The medium dialogs: the properties of an engineering system as its library keeps them. The
// family shares the help reference, the catalog lookup of the fittings' variants, the F1 key
// and every widget but those of the medium itself; MediumDialog edits a system that carries a
// medium, MediumDialog2 a ventilation system.

#include "engsys/medium_record.h"

#include <QDialog>
#include <QtGlobal>

#include <functional>

class QComboBox;
class QDoubleSpinBox;
class QSpinBox;
class QFormLayout;
class QLineEdit;
class QPushButton;
class QTabWidget;

namespace edw {

class IMediumDialog : public QDialog
{
    Q_OBJECT
public:
    // Opens the help file at a topic; the host's help unless replaced (tests).
    using HelpOpener = std::function<void(const QString& file, int topic)>;
    static void setHelpOpener(HelpOpener opener);
    // Chooses a colour starting from the current one; false when cancelled. The library's
    // styled colour dialog unless replaced (tests).
    using ColorChooser = std::function<bool(QWidget* parent, QColor& color)>;
    static void setColorChooser(ColorChooser chooser);

    // The distinct "OVK_VARIANT" values of the packet named standard in the catalog pool
    // provider; empty when there is no such packet or no value.
    static QStringList variantsOf(qint64 provider, const QString& standard);

    // Loads the record into the widgets (load true) or stores the widgets into it.
    virtual void transfer(bool load) = 0;
    virtual QString duplicateNameMessage() const = 0;
    virtual QString missingNameMessage() const = 0;
    virtual QString missingDesignationMessage() const = 0;
    virtual void returnToFirstTab();

    // The message for a record that cannot be taken in create mode, in the order of the
    // checks; empty when it can.
    QString createProblem() const;

    MediumRecord& record() { return m_record; }

protected:
    IMediumDialog(const MediumRecord& record, bool create, QWidget* parent);

    // The common widgets, built before the subclass adds its own rows to propertiesForm().
    void buildCommon();
    // Loads or stores the widgets both dialogs have.
    void transferCommon(bool load);
    // Enables each combo with items and widens the drop-downs; property mode disables the
    // name and designation.
    void finishBuild();
    QFormLayout* propertiesForm() const { return m_propertiesForm; }
    bool createMode() const { return m_create; }

    static void loadCombo(QComboBox* combo, const QStringList& items, const QString& current);
    static QString comboText(const QComboBox* combo);
    static void fitCombo(QComboBox* combo);

    void keyPressEvent(QKeyEvent* event) override;
    // The colour swatch fills the button once the button has its laid-out size.
    void showEvent(QShowEvent* event) override;

private slots:
    void on_segCombo_currentIndexChanged1(int);
    void on_otvodCombo_currentIndexChanged1(int);
    void on_troinikCombo_currentIndexChanged1(int);
    void on_perehodCombo_currentIndexChanged1(int);
    void OnColorButtonClicked();

private:
    void refillVariants(QComboBox* standard, QComboBox* variants);
    void showColor();
    QComboBox* addCombo(QWidget* parent, const char* objectName);

    MediumRecord m_record;
    bool m_create = false;
    QString m_helpFile;
    int m_helpId = 0;
    qint64 m_provider = 0;

protected:
    QTabWidget* m_tabs = nullptr;
    QLineEdit* m_nameEdit = nullptr;
    QLineEdit* m_prefixEdit = nullptr;
    QPushButton* m_colorButton = nullptr;
    QComboBox *m_segCombo = nullptr, *m_segVarCombo = nullptr;
    QComboBox *m_otvodCombo = nullptr, *m_otvodVarCombo = nullptr;
    QComboBox *m_troinikCombo = nullptr, *m_troinikVarCombo = nullptr;
    QComboBox *m_perehodCombo = nullptr, *m_perehodVarCombo = nullptr;
    QComboBox *m_isoSegCombo = nullptr, *m_isoOtvodCombo = nullptr;
    QComboBox *m_isoTroinikCombo = nullptr, *m_isoPerehodCombo = nullptr;
    QPushButton* m_okButton = nullptr;
    QPushButton* m_cancelButton = nullptr;
    QPushButton* m_helpButton = nullptr;

private:
    QFormLayout* m_propertiesForm = nullptr;
};

// A system carrying a medium: category of line, temperature, density, maximum pressure.
class MediumDialog : public IMediumDialog
{
    Q_OBJECT
public:
    MediumDialog(const MediumRecord& record, bool create, QWidget* parent = nullptr);

    void transfer(bool load) override;
    QString duplicateNameMessage() const override;
    QString missingNameMessage() const override;
    QString missingDesignationMessage() const override;

private:
    QComboBox* m_catBox = nullptr;
    QSpinBox* m_tempSpin = nullptr;
    QSpinBox* m_denSpin = nullptr;
    QDoubleSpinBox* m_maxPSpin = nullptr;
};

// Runs the medium dialog for the export: MediumDialog2 when ventilation is set. On acceptance
// stores the edited record in the export's result buffer, points *result at it and returns
// true. A record of another version is refused with a message; cancelling gives false. In
// create mode a record with a taken, missing name or a missing designation is answered with a
// message and the dialog again on its first tab.
bool runMediumDialog(quintptr parentWindow, bool create, bool ventilation,
                     const QByteArray& request, const char** result);

} // namespace edw
