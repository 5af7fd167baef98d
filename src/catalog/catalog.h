#pragma once

// The catalog element model in one include: conversions at the catalog boundary, the tree
// helpers, specification descriptions, formulas, digests and transactions.
#include "catalog_tree.h"
#include "digest.h"
#include "element_ops.h"
#include "element_save.h"
#include "esconvert.h"
#include "formula.h"
#include "object.h"
#include "spec_description.h"
#include "stdsize.h"
#include "transaction_scope.h"
