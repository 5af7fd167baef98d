#pragma once

#include "element_ops.h"
#include "panel_parameter.h"
#include "spec_description.h"

#include <esdata/esdata.h>

#include <QString>

#include <vector>

namespace edw {

// What the element editor's "save" hands to the catalog.
struct ElementSaveRequest
{
    es_provider_t* provider = nullptr;
    // Where a new element goes and what it is (see createElement).
    QString categoryPath;
    QString type;
    QString idPrefix;
    QString request;
    // The element being edited; null to create one.
    es_stdsize_t* target = nullptr;
    // The element being cloned: its schema, values, formulas, specifications and
    // representation data are copied first. Null when not cloning.
    es_stdsize_t* templateElement = nullptr;
    std::vector<PanelParameter> parameters;
    std::vector<ViewFile> views;
    // Specification descriptions with formulas in the user's form; converted on the way.
    std::vector<SpecDescription> specifications;
    // The specifications are already in the catalog's form (kept from a stored element, as
    // the editor does when it clones or edits): written without conversion.
    bool specificationsInCatalogForm = false;
};

// Runs the save sequence: create (or take) the element, copy the template, write the panel's
// values, replace the graphics, convert and write the specifications, record hidden layers,
// copy the template's representation data and write the bookkeeping attributes. All of it
// stands or, where the catalog offers transactions, none of it: the element, or null when a
// step failed.
es_stdsize_t* saveElement(const ElementSaveRequest& request);

// The category a template element was filed under ("USS_CATEGORY_NAME").
QString templateCategory(es_stdsize_t* templateElement);

} // namespace edw
