// Runs the fuzz target once over every file of a corpus folder, so that the normal build
// checks the seeds and every committed reproducer on each test run.
#include <QDir>
#include <QFile>

#include <cstdint>
#include <cstdio>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

int main(int argc, char* argv[])
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s <corpus folder>\n", argv[0]);
        return 2;
    }
    const QDir corpus(QString::fromLocal8Bit(argv[1]));
    const QStringList names = corpus.entryList(QDir::Files, QDir::Name);
    if (names.isEmpty()) {
        std::fprintf(stderr, "no corpus files in %s\n", argv[1]);
        return 1;
    }
    for (const QString& name : names) {
        QFile file(corpus.filePath(name));
        if (!file.open(QIODevice::ReadOnly)) {
            std::fprintf(stderr, "cannot read %s\n", qPrintable(name));
            return 1;
        }
        const QByteArray bytes = file.readAll();
        std::printf("%s (%lld bytes)\n", qPrintable(name), static_cast<long long>(bytes.size()));
        std::fflush(stdout);
        LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.constData()),
                               size_t(bytes.size()));
    }
    std::printf("%lld corpus files read\n", static_cast<long long>(names.size()));
    return 0;
}
