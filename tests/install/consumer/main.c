/* Names the library and writes a catalog with one packet through the installed store. */
#include <esdata/esdata.h>
#include <marlouss/marlouss.h>

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

/* The path argument (UTF-8) as the store takes it; characters beyond the BMP are not needed. */
static char16_t* widen(const char* text)
{
    const unsigned char* s = (const unsigned char*)text;
    char16_t* out = calloc(strlen(text) + 1, sizeof(char16_t));
    size_t n = 0;
    while (out && *s) {
        if (*s < 0x80) {
            out[n++] = *s++;
        } else if ((*s & 0xE0) == 0xC0 && s[1]) {
            out[n++] = (char16_t)(((s[0] & 0x1F) << 6) | (s[1] & 0x3F));
            s += 2;
        } else if ((*s & 0xF0) == 0xE0 && s[1] && s[2]) {
            out[n++] = (char16_t)(((s[0] & 0x0F) << 12) | ((s[1] & 0x3F) << 6) | (s[2] & 0x3F));
            s += 3;
        } else {
            free(out);
            return NULL;
        }
    }
    return out;
}

int main(int argc, char** argv)
{
    if (argc != 2) return 2;
    char16_t* path = widen(argv[1]);
    es_provider_t* provider = path ? esx_OpenCatalog(path, u"user_tx", true) : NULL;
    free(path);
    if (!provider) {
        fprintf(stderr, "the catalog was not created\n");
        return 1;
    }
    const bool added = provider_AddPacket(provider, u"Трубы") != NULL;
    printf("%ls packets=%u\n", LIBRARYNAMEW(), (unsigned)provider_GetPacketCount(provider));
    esx_CloseCatalog(provider);
    return added ? 0 : 1;
}
