#include "pngwriter.h"

#include <array>

namespace gen {

namespace {

uint32_t crc32(const QByteArray& data, uint32_t crc = 0)
{
    static const std::array<uint32_t, 256> table = [] {
        std::array<uint32_t, 256> t{};
        for (uint32_t n = 0; n < 256; ++n) {
            uint32_t c = n;
            for (int k = 0; k < 8; ++k)
                c = (c & 1) ? 0xedb88320u ^ (c >> 1) : c >> 1;
            t[n] = c;
        }
        return t;
    }();
    crc = ~crc;
    for (char ch : data)
        crc = table[(crc ^ uint8_t(ch)) & 0xff] ^ (crc >> 8);
    return ~crc;
}

void put32(QByteArray& out, uint32_t v)
{
    out.append(char(v >> 24)).append(char(v >> 16)).append(char(v >> 8)).append(char(v));
}

void chunk(QByteArray& out, const char* type, const QByteArray& body)
{
    put32(out, uint32_t(body.size()));
    QByteArray typed = QByteArray(type, 4) + body;
    out.append(typed);
    put32(out, crc32(typed));
}

} // namespace

QByteArray encodePng(int width, int height, const QByteArray& rgb)
{
    QByteArray raw;
    for (int y = 0; y < height; ++y) {
        raw.append('\0'); // no filter
        raw.append(rgb.mid(y * width * 3, width * 3));
    }
    // zlib stream of stored deflate blocks.
    QByteArray z("\x78\x01", 2);
    const int kBlock = 65535;
    for (int pos = 0; pos < raw.size() || pos == 0; pos += kBlock) {
        int len = int(std::min<qsizetype>(kBlock, raw.size() - pos));
        bool last = pos + len >= raw.size();
        z.append(char(last ? 1 : 0));
        z.append(char(len & 0xff)).append(char(len >> 8));
        z.append(char(~len & 0xff)).append(char((~len >> 8) & 0xff));
        z.append(raw.mid(pos, len));
        if (last) break;
    }
    uint32_t a = 1, b = 0;
    for (char ch : raw) {
        a = (a + uint8_t(ch)) % 65521;
        b = (b + a) % 65521;
    }
    put32(z, (b << 16) | a);

    QByteArray png("\x89PNG\r\n\x1a\n", 8);
    QByteArray ihdr;
    put32(ihdr, uint32_t(width));
    put32(ihdr, uint32_t(height));
    ihdr.append(char(8)).append(char(2)).append(char(0)).append(char(0)).append(char(0));
    chunk(png, "IHDR", ihdr);
    chunk(png, "IDAT", z);
    chunk(png, "IEND", QByteArray());
    return png;
}

} // namespace gen
