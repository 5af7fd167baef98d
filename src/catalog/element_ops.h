#pragma once

#include "object.h"
#include "panel_parameter.h"

#include <esdata/esdata.h>

#include <QDateTime>
#include <QString>

#include <cstdint>
#include <utility>
#include <vector>

namespace edw {

// Composite operations on catalog elements. A lookup that yields nothing ends an operation
// quietly with an empty result; the caller reports the failure in its own words.

// The element identified by packet name and identifier, as an object of the catalog opened
// under libraryId. Empty when any step fails.
CObject openElementObject(const QString& libraryId, const QString& packetName,
                          const QString& elementId);

// prefix + "USER#<local time yyyy.MM.ddThh:mm:ss>#" + request.
QString makeElementId(const QString& prefix, const QString& request,
                      const QDateTime& now = QDateTime::currentDateTime());

// A new element of the given type under the category path ("\"-separated, empty parts
// dropped; the first part names the packet), in a folder of its own named "folder " + its
// identifier. Missing packet and folders are created, existing ones reused. Null on failure
// (also for an empty path).
es_stdsize_t* createElement(es_provider_t* provider, const QString& categoryPath,
                            const QString& type, const QString& idPrefix, const QString& request);

// Writes each (attribute name, text) in order by the attribute's type; unknown names and
// unknown types are skipped.
void setValuesByName(es_stdsize_t* element, const std::vector<std::pair<QString, QString>>& values);

// Writes a value of the object by attribute name; an unknown name or an empty object does
// nothing. Returns whether the store took it.
bool objectSetValue(const CObject& object, const QString& name, int32_t value);
bool objectSetValue(const CObject& object, const QString& name, double value);
bool objectSetValue(const CObject& object, const QString& name, const QString& value);

// Copies schema, values and formulas of source into target (never the attribute numbered
// 11), then writes the source's specification descriptions into target. Returns the
// success of that last step.
bool copyElement(es_stdsize_t* source, es_stdsize_t* target);
// Copies the opaque representation data of source into target.
bool copyRepresentationData(es_stdsize_t* source, es_stdsize_t* target);

// A view file that the editor supplies: kind 0..11 (11 is the 3D model).
struct ViewFile
{
    int kind = 0;
    QString file;
    QString name;        // empty: the file's base name
    QString description; // further descriptive text of a projection
    int32_t version = 0; // passed with the 3D model
};

// Projection type (1 top, 2 front, 3 back, 4 left, 5 right) and view type (0 common,
// 1 simple, 2 standard drawing view) of a view kind.
uint32_t projectionType(int kind);
uint32_t viewType(int kind);
// The icon's file: the view's file with the extension replaced by ".ico".
QString iconPathFor(const QString& viewFile);
// Renders an icon of an SVG document into iconFile; false (and no file) when the document is
// not SVG or the icon cannot be written.
bool writeIcon(const QString& documentFile, const QString& iconFile);

// Removes every projection and the model of element and writes the given views (each with
// its icon beside it) and the model (kind 11). False when a view or the model is refused.
bool replaceGraphics(es_stdsize_t* element, const std::vector<ViewFile>& views);

// Adds, per hidden layer of each projection's fragment (as the host reports it), a real
// attribute "hiddenLayer_<n>" (first free n from 0) with variable name "LAYER<layer>" and
// value 0. Returns how many were added.
int recordHiddenLayers(es_stdsize_t* element);

// Writes the parameter panel's values: missing attributes are added; a formula is converted
// to the catalog's form and stored as the attribute's formula (warning
// "Ошибка преобразования формулы" when nothing comes out); other values are written by the
// attribute's type. "Length", "Height" and "Width" get the variable names L, H and W.
void writePanelValues(es_stdsize_t* element, const std::vector<PanelParameter>& parameters);

// "<USERNAME>\<COMPUTERNAME>" with "user" and "pc" when unset.
QString ussAuthor();
// Writes "USS_AUTHOR" and "USS_LAST_CHANGE_DATE" (dd.MM.yyyy hh:mm:ss), adding them as text
// attributes when the element's table lacks them.
void writeBookkeeping(es_stdsize_t* element, const QDateTime& now = QDateTime::currentDateTime());

} // namespace edw
