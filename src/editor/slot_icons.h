#pragma once

#include <QColor>
#include <QIcon>

namespace edw {

// The icon of a view slot drawn from its glyph code (U+E574 ... U+E57F): a sheet seen from the
// slot's side, simplified views dashed, the drawing view with its title block, the 3D model as
// a cube. The filled look marks a slot that has an image.
QIcon glyphIcon(char16_t glyph, bool filled, const QColor& ink);

} // namespace edw
