#pragma once

#include "importrecord.h"

#include <esdata/esdata.h>

#include <QString>

#include <optional>
#include <vector>

namespace exchange {

enum class Decision
{
    New,      // no element of the same packet and id in the catalog
    Same,     // there is one, with the same "USS_LAST_CHANGE_DATE": nothing to do
    Conflict, // there is one, changed at another moment
    Repeated, // an earlier record of the archive has the same packet and id: never imported
};

enum class ConflictPolicy
{
    KeepMine,            // "Оставить мой": the catalog's element stays
    ReplaceWithImported, // "Заменить на импортируемый"
};

// Looks every record up in the catalog (packet by name, element by id) and decides from the
// change stamps, compared as text. Sets each record's `existing`. Only the first record of a
// packet and id counts; the later ones are Repeated.
std::vector<Decision> decide(ImportRecords& records, es_provider_t* provider);

// True when at least one decision needs the user (a new element or a conflict).
bool needsDecision(const std::vector<Decision>& decisions);

// Marks the records to drop: every Same and Repeated one, and the conflicts when policy keeps
// mine. New records are kept.
void applyPolicy(ImportRecords& records, const std::vector<Decision>& decisions,
                 ConflictPolicy policy);

// Removes the records marked to drop, keeping the order of the others. Returns how many stay.
size_t compactRecords(ImportRecords& records);

// The host's version text as a number, after every ".", "a", "b", "r" and "c" is removed
// ("23.1" gives 231); nothing when what remains is not a number.
std::optional<long long> hostVersionNumber(const QString& versionText);
// The record's model was made by a later host version than hostNumber.
bool isLaterVersion(const ImportRecord& record, long long hostNumber);

} // namespace exchange
