#pragma once

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

struct zip;

namespace zipper {

// Limits that keep a hostile or broken archive from filling the disk or the memory.
struct limits
{
    std::int64_t maxEntries = 1'000'000;
    // Sum of the bytes actually extracted through one archive (one unzip object): at most
    // maxRatio times the archive's size on disk plus ratioFloor, and never more than this.
    std::int64_t maxTotalBytes = std::int64_t(32) << 30;
    // Bytes extracted per compressed byte of an entry, checked once an entry passed
    // ratioFloor bytes (small files legitimately compress far). Deflate turns runs of one
    // byte into about 1030:1; models and fragments stay near 10:1, and a document of
    // near-identical elements deflated at the highest level was measured at 160:1.
    std::int64_t maxRatio = 256;
    std::int64_t ratioFloor = std::int64_t(1) << 20;
};

// Reads a ZIP archive. Entry names are looked up with "/" and "\" taken as the same
// separator. Every read goes to the end of the entry, counting the bytes: a CRC error, an
// entry longer or shorter than its declared size, or a broken limit throws zipper::error,
// and a file being extracted is deleted. Any thread may call it: entries are read one at a
// time, since libzip's archive must not be read from two threads at once.
class unzip
{
public:
    // Opens path read-only. Throws zipper::error when it is not a readable ZIP archive or
    // holds more entries than allowed.
    explicit unzip(const QString& path, const limits& bounds = limits());
    ~unzip();
    unzip(const unzip&) = delete;
    unzip& operator=(const unzip&) = delete;

    // Entry names are compared after "/" is turned into "\".
    bool contains(const QString& entryName) const;
    // Declared uncompressed size, or -1 when there is no such entry.
    std::int64_t declaredSize(const QString& entryName) const;
    int entryCount() const { return int(m_index.size()); }

    // The whole entry in memory; throws zipper::error when it is missing, damaged or larger
    // than maxBytes.
    QByteArray readAll(const QString& entryName, std::int64_t maxBytes);
    // The entry's bytes handed to sink part by part as they are inflated, with the checks of
    // readAll; nothing is kept. What sink throws ends the read and is passed on. The sink runs
    // while this reader reads: it must not call the same reader.
    void read(const QString& entryName, std::int64_t maxBytes,
              const std::function<void(const char* data, std::int64_t size)>& sink);
    // Reads the entry to its end and lets go of the bytes: the same checks as a read, nothing
    // kept. Throws zipper::error when it is missing or damaged.
    void check(const QString& entryName);
    // Extracts the entry into targetPath (created or replaced); on any failure the target is
    // removed and zipper::error is thrown.
    void extract(const QString& entryName, const QString& targetPath);

    static QString normalized(QString entryName);

private:
    template <class Sink>
    void readEntry(const QString& entryName, std::int64_t maxBytes, Sink&& sink);

    struct ::zip* m_zip = nullptr;
    QString m_path;
    limits m_limits;
    // What the archive may expand to in all, after its size on disk.
    std::int64_t m_budget = 0;
    std::int64_t m_extracted = 0;
    // The entry of a normalized name: its first index among those whose name hashes alike.
    // Hashes and indexes only, sorted: the names themselves stay in libzip's directory, which
    // holds them anyway, and are compared on a hit.
    std::optional<std::uint64_t> find(const QString& entryName) const;
    struct Slot
    {
        std::size_t hash;
        std::uint32_t index;
        bool operator<(const Slot& other) const
        {
            return hash != other.hash ? hash < other.hash : index < other.index;
        }
    };
    std::vector<Slot> m_index;
    mutable std::mutex m_mutex;
};

} // namespace zipper
