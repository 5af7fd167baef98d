// A minimal PNG encoder (uncompressed deflate blocks) for the generator's preview icons.
#ifndef GEN_PNGWRITER_H
#define GEN_PNGWRITER_H

#include <QByteArray>

#include <cstdint>

namespace gen {

// An RGB image of width × height pixels, rgb holding 3 bytes per pixel row by row.
QByteArray encodePng(int width, int height, const QByteArray& rgb);

} // namespace gen

#endif
