#pragma once

#include "importrecord.h"

#include <esdata/esdata.h>

#include <QPixmap>
#include <QSize>
#include <QStringList>
#include <QString>

#include <memory>
#include <vector>

class QLabel;
class QTabWidget;
class QTemporaryDir;
class QToolButton;
class QWidget;

class QDialog;
class QHBoxLayout;
class QLabel;
class QPushButton;
class QTabWidget;
class QToolButton;
class QTreeWidget;

namespace exchange {

class ImportArchive;

// One view button of the comparison and property views: the projection it stands for (the
// model for the last one) and its icon's base name under ":/red/" and ":/clean/".
struct CompareSlotRow
{
    const char* button;
    const char* toolTip;
    int projectionType; // 0: the element's 3D model
    int viewType;
    const char* icon;
};
constexpr int kCompareSlotCount = 12;
constexpr int kCompareModelSlot = 11;
const CompareSlotRow& compareSlotRow(int index);

// What one view button shows: the extracted file of the import record, the catalog's file of
// the same slot and whether the two differ.
struct CompareSlot
{
    bool enabled = false;
    bool differs = false;
    QString importFile;
    QString stdFile;
    QString ext;
};

// The slot of the table row `index` for the element `mine` (null: no element of the catalog)
// and the import record. A slot that neither side has is disabled; so is the model slot of a
// record without a model file. The record's file is extracted through the archive.
CompareSlot compareSlot(int index, es_stdsize_t* mine, const ImportElement& imported,
                        ImportArchive& archive);

// The text a side shows when the host gives no picture of its file.
QString noPictureText();

// Pictures of host documents for the preview labels, drawn by the host into a temporary folder
// of the dialog that owns this object.
class PreviewPainter
{
public:
    PreviewPainter();
    ~PreviewPainter();
    // The host's picture of the file, at most size pixels on a side; null when the file is
    // empty or the host cannot draw it.
    QPixmap picture(const QString& file, int size);
    // Shows the picture of file in label, or the text when there is none.
    void show(QLabel* label, const QString& file);

private:
    std::unique_ptr<QTemporaryDir> m_dir;
    int m_count = 0;
};

// The value of one parameter row as the user reads it: the value, or the formula when the
// record carries one instead.
QString importedText(const AttributeRecord& attribute);
// Whether two values of an attribute of the given type code are the same: integers compared
// as base-10 numbers, reals within 1e-5, texts (and unknown types) as they stand.
bool sameValue(int type, const QString& a, const QString& b);

// The twelve view buttons in their grid on parent, in table order, with their names and
// tool tips; checkable, one checked at a time.
std::vector<QToolButton*> addViewButtons(QWidget* parent);
// Sets a view button's properties and icon from its slot: "red" when the sides differ.
void applySlot(QToolButton* button, int index, const CompareSlot& slot, bool markDifference);

// The warning icon of a tab whose contents differ.
void markTab(QTabWidget* tabs, int index);

// What both views are built of: the tab widget with the views tab (the slot buttons, then the
// previews the caller adds to `views`) and the parameters tab with its tree, over a row of two
// choice buttons and "Закрыть".
struct CompareLayout
{
    QTabWidget* tabs = nullptr;
    QHBoxLayout* views = nullptr;
    std::vector<QToolButton*> viewButtons;
    QTreeWidget* tree = nullptr;
    QPushButton* first = nullptr;
    QPushButton* second = nullptr;
    QPushButton* close = nullptr;
};
struct NamedText
{
    QString text;
    QString objectName;
};
CompareLayout buildCompareLayout(QDialog* dialog, const QString& treeName,
                                 const QStringList& columns, const NamedText& first,
                                 const NamedText& second);
// A framed preview label for pictures of the given size; the text of a side without a picture
// wraps inside it.
QLabel* previewLabel(const QString& name, QSize picture, QWidget* parent = nullptr);

// The compiled-in pictures of the views (view icons, the warning icon).
void ensureCompareResources();

} // namespace exchange
