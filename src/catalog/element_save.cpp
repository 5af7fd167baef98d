#include "element_save.h"

#include "catalog_tree.h"
#include "esconvert.h"
#include "formula.h"
#include "transaction_scope.h"

namespace edw {

namespace {

bool runSteps(const ElementSaveRequest& request, es_stdsize_t* element)
{
    if (request.templateElement && !copyElement(request.templateElement, element)) return false;
    writePanelValues(element, request.parameters);
    if (!replaceGraphics(element, request.views)) return false;
    std::vector<SpecDescription> specs = request.specifications;
    if (!request.specificationsInCatalogForm) convertSpecFormulas(specs, element);
    if (!runCreateSpec(specs, element)) return false;
    recordHiddenLayers(element);
    if (request.templateElement) copyRepresentationData(request.templateElement, element);
    writeBookkeeping(element);
    return true;
}

} // namespace

es_stdsize_t* saveElement(const ElementSaveRequest& request)
{
    es_provider_t* provider = request.provider ? request.provider : providerOf(request.target);
    TransactionScope transaction(provider);
    es_stdsize_t* element = request.target;
    if (!element)
        element = createElement(provider, request.categoryPath, request.type, request.idPrefix,
                                request.request);
    if (!element || !runSteps(request, element)) return nullptr;
    return transaction.commit() ? element : nullptr;
}

QString templateCategory(es_stdsize_t* templateElement)
{
    es_value value{};
    if (!stdsize_GetValueByName(templateElement, u"USS_CATEGORY_NAME", &value)) return {};
    return valueToText(value);
}

} // namespace edw
