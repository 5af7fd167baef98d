#pragma once

#include <esdata/esdata.h>

#include <QString>

#include <optional>
#include <vector>

namespace exchange {

// The parsed form of the exchange document. Names of members follow the document.

struct AttributeRecord
{
    QString name;
    int num = 0;
    int type = 0;
    QString var;
    QString measure;
    std::optional<QString> formula;
    std::optional<QString> val;
    std::optional<QString> desc;
    std::optional<int> oldNum;
};

struct ModelRecord
{
    QString name;
    int version = 0;
    QString file; // entry name, may be empty
    QString icon; // entry name, may be empty
    QString digest;
};

struct ProjectionRecord
{
    QString name;
    int type = 0;
    int view = 0;
    QString file;
    QString icon;
    QString digest;
};

struct ColumnRecord
{
    int num = 0;
    QString val;
};

struct SpecRecord
{
    QString libName;
    int style = 0;
    int fPart = 0;
    int sPart = 0;
    std::vector<ColumnRecord> column;
};

// One element of the archive, plus what the import decides about it.
struct ImportRecord
{
    QString packet;
    QString folder;
    QString id;
    QString type;
    std::vector<AttributeRecord> atr;
    std::optional<ModelRecord> model; // absent when the document's model is null
    std::vector<ProjectionRecord> prj;
    std::optional<QString> repPath;
    std::vector<SpecRecord> spc;

    // Set by the decision step: the element of the same packet and id already in the target
    // catalog (replaced when the record is imported), and whether the record is dropped.
    es_stdsize_t* existing = nullptr;
    bool skip = false;

    // The record's value of the attribute named name, or empty.
    QString value(const QString& name) const;
    // Every field read from the document as one text, absent ones marked: for the debug log
    // and for comparing two readings of a document.
    QString describe() const;
};

struct DocumentHeader
{
    QString encoding;
    QString libName;
    QString exportDate;
};

} // namespace exchange
