#pragma once

#include <QString>
#include <QStringList>

#include <functional>

class QWidget;

namespace sandbox {

// What the comparison view showed while it was answered.
struct CompareExample
{
    QStringList problems; // what did not look right; empty when all did
    QStringList pictures; // the files written
    QString summary;      // one line for the run's output
};

// The answer for the library's comparison view (the dialog the import dialog opens for a
// conflict row), to be handed to ModalScript::expect with an empty shot name. Pressing every
// view button in turn, it checks what the user sees: the title and the buttons, the twelve
// view buttons with their files, each preview showing a picture or "Невозможно отобразить
// элемент", the parameter rows with their tool tips, and the warning icon on exactly the tabs
// that hold a difference. It saves the views tab (with the first differing view chosen) and
// the parameters tab as "<name>-views-<theme>.png" and "<name>-params-<theme>.png" in
// shotFolder (theme "light" or "dark", the host's theme when the view came up), then presses
// button: "impButton", "mineButton" or "closeButton".
//
// For pictures in both looks, open the comparison twice, the second time after
// sandbox::set_theme(theme_dark) (and set the theme back afterwards).
std::function<void(QWidget*)> showCompareExample(const QString& shotFolder, const QString& name,
                                                 const QString& button, CompareExample* result);

} // namespace sandbox
