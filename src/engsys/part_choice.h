#pragma once

// The section choice record exchanged with engineering libraries as JSON:
// {"version": 1, "curPart": "...", "parts": ["...", ...]}.

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace edw {

// Shown when a record of another format version arrives.
inline const QString kDataVersionMismatch =
    QStringLiteral("Диалог невозможно показать: несовпадение версии данных для MarloUss");

// The only record format version the dialogs understand.
inline constexpr int kRecordVersion = 1;

struct PartChoice
{
    // 0 when the text is not a JSON object or carries no integer version.
    int version = 0;
    QString curPart;
    QStringList parts;
};

// Reads a record; missing keys stay empty, text that is not JSON gives version 0.
PartChoice readPartChoice(const QByteArray& json);

// The record `json` written back with "curPart" set to `chosen`; every other key keeps its
// value.
QByteArray writePartChoice(const QByteArray& json, const QString& chosen);

// Keeps `json` in this export's result buffer, overwriting the previous result, and returns
// the buffer's text. Valid until the next call, which writes at the same address unless its
// record is larger than 64 KiB.
const char* keepPartChoiceResult(const QByteArray& json);

} // namespace edw
