#include "transaction_scope.h"

#include "store_extension.h"

namespace edw {

namespace {

using TransactionFn = bool (*)(es_provider_t*);

struct TransactionFunctions
{
    TransactionFn begin = nullptr;
    TransactionFn commit = nullptr;
    TransactionFn rollback = nullptr;

    bool complete() const { return begin && commit && rollback; }
};

TransactionFunctions lookUp()
{
    TransactionFunctions fns;
    fns.begin = storeFunction<TransactionFn>("esx_Begin");
    fns.commit = storeFunction<TransactionFn>("esx_Commit");
    fns.rollback = storeFunction<TransactionFn>("esx_Rollback");
    return fns;
}

const TransactionFunctions& functions()
{
    static const TransactionFunctions fns = lookUp();
    return fns;
}

} // namespace

TransactionScope::TransactionScope(es_provider_t* provider) : m_provider(provider)
{
    const TransactionFunctions& fns = functions();
    if (provider && fns.complete()) m_active = fns.begin(provider);
}

TransactionScope::~TransactionScope()
{
    rollback();
}

bool TransactionScope::commit()
{
    if (!m_active) return true;
    m_active = false;
    if (functions().commit(m_provider)) return true;
    functions().rollback(m_provider);
    return false;
}

void TransactionScope::rollback()
{
    if (!m_active) return;
    m_active = false;
    functions().rollback(m_provider);
}

bool TransactionScope::supported()
{
    return functions().complete();
}

} // namespace edw
