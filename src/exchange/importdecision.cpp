#include "importdecision.h"

#include <catalog/catalog_tree.h>
#include <catalog/esconvert.h>

#include <QRegularExpression>

#include <set>
#include <utility>
#include <vector>

namespace exchange {

std::vector<Decision> decide(ImportRecords& records, es_provider_t* provider)
{
    const std::map<QString, es_packet_t*> packets = edw::packets(provider);
    const std::u16string stamp = edw::toEs(stampAttribute);
    std::vector<Decision> decisions;
    decisions.reserve(records.size());
    // The catalog holds one element per packet and id: a second record of the pair would fail
    // to be written, or replace the first.
    std::set<std::pair<QString, QString>> seen;
    for (ImportRecord& record : records) {
        record.existing = nullptr;
        const auto packet = packets.find(record.packet);
        if (packet != packets.end())
            record.existing = packet_FindStdSize(packet->second, edw::toEs(record.id).c_str());
        if (!seen.emplace(record.packet, record.id).second) {
            decisions.push_back(Decision::Repeated);
            continue;
        }
        if (!record.existing) {
            decisions.push_back(Decision::New);
            continue;
        }
        es_value value{};
        stdsize_GetValueByName(record.existing, stamp.c_str(), &value);
        decisions.push_back(edw::valueToText(value) == record.stamp ? Decision::Same
                                                                    : Decision::Conflict);
    }
    return decisions;
}

bool needsDecision(const std::vector<Decision>& decisions)
{
    for (const Decision d : decisions)
        if (d == Decision::New || d == Decision::Conflict) return true;
    return false;
}

void applyPolicy(ImportRecords& records, const std::vector<Decision>& decisions,
                 ConflictPolicy policy)
{
    for (size_t i = 0; i < records.size() && i < decisions.size(); ++i) {
        switch (decisions[i]) {
        case Decision::New:
            records[i].skip = false;
            break;
        case Decision::Same:
        case Decision::Repeated:
            records[i].skip = true;
            break;
        case Decision::Conflict:
            records[i].skip = policy == ConflictPolicy::KeepMine;
            break;
        }
    }
}

size_t compactRecords(ImportRecords& records)
{
    std::erase_if(records, [](const ImportRecord& r) { return r.skip; });
    return records.size();
}

std::optional<long long> hostVersionNumber(const QString& versionText)
{
    static const QRegularExpression noise(QStringLiteral("[.abrc]"));
    QString cleaned = versionText;
    cleaned.remove(noise);
    bool ok = false;
    const long long number = cleaned.trimmed().toLongLong(&ok);
    if (!ok) return std::nullopt;
    return number;
}

bool isLaterVersion(const ImportRecord& record, long long hostNumber)
{
    return record.modelVersion && *record.modelVersion > hostNumber;
}

} // namespace exchange
