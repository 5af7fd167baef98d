#pragma once

// The folder and file choosers asked for when drawings are produced from a building model.
// Their labels, buttons and column titles are Russian; the host's translators are left alone.

#include <QString>

class QFileDialog;
class QWidget;

namespace edw {

// "Выберите папку для сохранения чертежа ГРАИС": folders only, starting in the current
// folder. Owned by parent.
QFileDialog* makeDirectoryChooser(QWidget* parent);

// "Укажите имя файла для записи": a save dialog preset with defaultPath, filter
// "ГРАВИС-Чертежи (*.cdw)". Owned by parent.
QFileDialog* makeFileSavingChooser(QWidget* parent, const QString& defaultPath);

// Runs a chooser modally; the chosen path, or an empty string when cancelled.
QString runChooser(QFileDialog* chooser);

} // namespace edw
