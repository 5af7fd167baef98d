#pragma once

// The system record exchanged with the engineering libraries as JSON by the medium dialogs:
// a system (pipeline or duct) with its medium, its fittings' standards and variants, its
// insulations, and what the dialog needs to look things up (help, catalog connection).

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace edw {

struct MediumRecord
{
    int version = 0; // 0 when the text is not a JSON object or carries no integer version
    QString sysName;
    QString prefix;
    bool protoch = true; // ventilation: true supply, false exhaust
    int color = 0;       // 0x00BBGGRR
    QStringList systems; // names already in the section

    QString curSeg, varSeg;
    QStringList segs;
    QString curOtvod, varOtvod;
    QStringList otvods;
    QString curTrk, varTrk;
    QStringList trks;
    QString curPrh, varPrh;
    QStringList prhs;

    QString currentIsoSegment, currentIsoBend, currentIsoTee, currentIsoTransition;
    QStringList isoSegments, isoBends, isoTees, isoTransitions;

    QString cat;
    QStringList cats;
    QString temp;    // whole °C in decimal text
    QString density; // whole kg/m³ in decimal text
    QString maxP;    // MPa with two decimals

    QString chmHelp;
    int helpId = 0;
    qint64 provider = 0; // catalog pool handle for the variant lookups
};

// Reads a record; missing keys keep their defaults, text that is not JSON gives version 0.
MediumRecord readMediumRecord(const QByteArray& json);

// The record as one line of JSON with every key, in the key order JsonCpp keeps (by name).
QByteArray writeMediumRecord(const MediumRecord& record);

// Keeps json in this export's result buffer, overwriting the previous result, and returns the
// buffer's text. Valid until the next call.
const char* keepMediumResult(const QByteArray& json);

} // namespace edw
