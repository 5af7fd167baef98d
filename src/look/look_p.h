#pragma once

// Internals of the look shared between its files and its tests; not for other subsystems.

#include <QString>
#include <QStringList>

namespace qt::detail {

// Replaces every "%N" (all digits after the sign make N; N from 1 to values.size()) with
// values[N - 1] in a single pass: text brought in by a value is never
// looked at again, so a value may itself contain "%1".
QString fill_placeholders(const QString& text, const QStringList& values);

// The 40 values of the style sheet template, in placeholder order.
QStringList style_sheet_values(bool dark);

// Resource path of the style sheet template; tests point it at a missing file.
QString style_template_path();
void set_style_template_path(const QString& path);

// A pixel size that follows the screen: multiplied by the primary screen's device-pixel
// ratio (read once per process, 1.0 without a screen) and rounded down.
int screen_scaled(int pixels);

} // namespace qt::detail
