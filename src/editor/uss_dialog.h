#pragma once

#include "catalog/xml_controls.h"
#include "editor/editor_environment.h"

#include <esdata/esdata.h>

#include <QDialog>
#include <QIcon>
#include <QStringList>

#include <memory>
#include <vector>

class QAbstractButton;
class QCheckBox;
class QComboBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QRadioButton;
class QTabWidget;
class QToolButton;
class QVBoxLayout;

namespace edw {

class ParameterPanel;

// Source states of a view slot.
enum ViewSource
{
    SourceNone = 0,      // "Отсутствует"
    SourceSelection = 1, // "По выделению"
    SourceFile = 2,      // "Из файла"
    SourceOriginal = 3   // "Исходное"
};

// One image of the element: a projection (slots 0-10) or the 3D model (slot 11).
struct ViewSlot
{
    int index = 0;
    int state = SourceNone;
    int rememberedState = SourceNone;
    QString filePath; // chosen from disk
    // The working copy of the source element's image ("clone_<slot>" in the working folder);
    // empty when the source has none. Copied from storedPath on first use (ViewModel::original).
    QString originalPath;
    QString storedPath; // the source element's file as the catalog keeps it
    bool extracted = false;
    QIcon icon;       // the glyph in the normal look
    QIcon filledIcon; // the glyph when the slot has an image
    QToolButton* button = nullptr;
    char16_t glyph = 0;
};

// The fixed table of the twelve slots.
struct ViewSlotSpec
{
    const char* button;
    const char* text;
    char16_t glyph;
};
const ViewSlotSpec& viewSlotSpec(int index);
constexpr int kViewSlotCount = 12;
constexpr int kModelSlot = 11;

class UssDialog;

// The slots, the current one and the selection paths, and what the dialog shows of them.
class ViewModel
{
public:
    ViewModel(std::vector<ViewSlot> all, QString selection, QString secondSelection,
              UssDialog* dialog);

    // Unchecks every view button and checks the current one.
    void select(int index);
    void setState(int state);
    // Radio buttons, file edit, preview and button looks follow the current slot.
    void refresh();

    int current() const { return m_current; }
    ViewSlot& currentSlot();
    std::vector<ViewSlot>& all() { return m_slots; }
    const std::vector<ViewSlot>& all() const { return m_slots; }
    // The file a slot's image comes from in its state; empty when it has none.
    QString sourceFile(const ViewSlot& slot) const;
    bool filled(const ViewSlot& slot) const { return !sourceFile(slot).isEmpty(); }
    // The slot's original in the working folder, copied there now if it was not yet; the
    // catalog's file when the copy cannot be made.
    QString original(ViewSlot& slot);
    // Copies every original not yet in the working folder.
    void extractOriginals();
    const QString& selection() const { return m_selection; }

private:
    std::vector<ViewSlot> m_slots;
    int m_current = 10;
    QString m_selection;
    QString m_secondSelection;
    UssDialog* m_dialog;
};

// The dialog in which a user element is created, created by example (clone) or edited: its
// images and where each comes from, its command, category or specification section, two
// model options and its parameters. Accepts only what can be saved.
class UssDialog : public QDialog
{
    Q_OBJECT
public:
    enum Mode
    {
        Create = 0,
        Clone = 1,
        Edit = 2
    };

    UssDialog(QWidget* parent, es_stdsize_t* source, ControlList parameters,
              const QString& commandsFile, const QStringList& commands,
              const QString& selectionPath, const QString& secondSelectionPath, unsigned mode,
              const QString& workFolder, const QString& category, bool noModel, int discipline,
              EditorEnvironment environment = defaultEnvironment());
    ~UssDialog() override;

    // What the caller reads after an accepted exec().
    const std::vector<ViewSlot>& viewSlots() const { return m_views->all(); }
    ViewModel& viewModel() { return *m_views; }
    bool projectSurfaces() const;
    bool useModelColor() const;
    QString command() const;
    QString categoryText() const;
    QString categoryData() const;
    QString specPartFirst() const;
    QString specPartSecond() const;
    ParameterPanel* parameterPanel() const { return m_panel; }
    bool specificationLayout() const { return m_discipline >= 1 && m_discipline <= 3; }

    // The tool tips of the slots the current command requires ("Сверху", "3D Деталь" ...),
    // in the command's order; empty when it names none. Reports what it cannot read.
    QStringList requiredViews(bool* ok = nullptr);

public slots:
    void OnViewRadioClicked();
    void OnViewFileButClicked();
    void OnViewPreFileButClicked();
    void OnCommandSelected(int index);
    void OnOkClicked();

private:
    friend class ViewModel;
    void buildWidgets();
    std::vector<ViewSlot> buildSlots(es_stdsize_t* source, const QString& workFolder);
    void setUpSpecification(es_stdsize_t* source);
    void fillSecondPart(const QString& section);
    bool failAccept(const QString& text, int tab);
    void warn(const QString& text);

    EditorEnvironment m_env;
    QString m_commandsFile;
    int m_discipline = 0;
    unsigned m_mode = 0;
    std::unique_ptr<ViewModel> m_views;
    ParameterPanel* m_panel = nullptr;

    QTabWidget* m_tabs = nullptr;
    QLabel* m_image = nullptr;
    QRadioButton* m_preFileRadio = nullptr;
    QRadioButton* m_selectionRadio = nullptr;
    QRadioButton* m_fileRadio = nullptr;
    QRadioButton* m_noneRadio = nullptr;
    QPushButton* m_preFileBut = nullptr;
    QLineEdit* m_fileEdit = nullptr;
    QPushButton* m_fileBut = nullptr;
    QGroupBox* m_modelGroup = nullptr;
    QCheckBox* m_projectSurfaces = nullptr;
    QCheckBox* m_useModelColor = nullptr;
    QComboBox* m_commandBox = nullptr;
    QComboBox* m_categoryBox = nullptr;
    QLabel* m_categoryLabel = nullptr;
    QComboBox* m_specFirst = nullptr;
    QComboBox* m_specSecond = nullptr;
    QLabel* m_specFirstLabel = nullptr;
    QLabel* m_specSecondLabel = nullptr;
    QVBoxLayout* m_paramLayout = nullptr;
    QPushButton* m_okButton = nullptr;
    QPushButton* m_cancelButton = nullptr;
    QPushButton* m_helpButton = nullptr;
    std::vector<QToolButton*> m_viewButtons;
    std::vector<QRadioButton*> m_sourceRadios; // by source state
};

// Category item data roles of qCategoryBox besides the identifier in Qt::UserRole.
constexpr int kCategoryNameRole = 200;
constexpr int kCategoryPrefixRole = 201;

} // namespace edw
