#pragma once

#include <esdata/esdata.h>

#include <QString>

#include <deque>
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

// One element of the archive as the document gives it, every field read.
struct ImportElement
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

    // The element's value of the attribute named name, or empty.
    QString value(const QString& name) const;
    // Every field read from the document as one text, absent ones marked: for the debug log
    // and for comparing two readings of a document.
    QString describe() const;
};

// The attributes that name who changed an element last and when.
inline const QString authorAttribute = QStringLiteral("USS_AUTHOR");
inline const QString stampAttribute = QStringLiteral("USS_LAST_CHANGE_DATE");

// One element of the archive as an import holds it while it decides and writes: what names
// the element, what the decision and the dialogs show of it, and where the archive keeps the
// whole element (ImportArchive::element() reads it back), so that an import's memory does not
// grow with the elements' contents. Plus what the import decides about it.
struct ImportRecord
{
    QString packet;
    QString folder;
    QString id;
    QString type;
    QString author;                  // the value of authorAttribute
    QString stamp;                   // the value of stampAttribute
    std::optional<int> modelVersion; // absent without a model

    // Set by the decision step: the element of the same packet and id already in the target
    // catalog (replaced when the record is imported), and whether the record is dropped.
    es_stdsize_t* existing = nullptr;
    bool skip = false;

    // Where the archive keeps the whole element; negative for none.
    qint64 offset = -1;
    qint64 size = 0;

    // The head of element, kept nowhere yet.
    static ImportRecord of(const ImportElement& element);
    // The value of authorAttribute or stampAttribute, the only ones a record keeps; empty
    // for any other name.
    QString value(const QString& name) const;
};

// The records of a document, in its order. Blocks rather than one array: a document of
// unknown length grows it record by record, and an array would be copied, twice as large,
// on every growth.
using ImportRecords = std::deque<ImportRecord>;

struct DocumentHeader
{
    QString encoding;
    QString libName;
    QString exportDate;
};

} // namespace exchange
