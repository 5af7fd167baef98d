#pragma once

#include <esdata/esdata.h>

namespace edw {

// All-or-nothing writes on one catalog, where the catalog library offers transactions. The
// transaction functions are looked up at run time in the already loaded catalog library, so
// that the program still works against a library without them (then writes simply stand).
// The destructor rolls back what was not committed.
class TransactionScope
{
public:
    explicit TransactionScope(es_provider_t* provider);
    ~TransactionScope();
    TransactionScope(const TransactionScope&) = delete;
    TransactionScope& operator=(const TransactionScope&) = delete;

    // Makes the writes since construction permanent. True when they are (also when the
    // library has no transactions); false when the commit failed, the writes are then undone.
    bool commit();
    // Undoes the writes since construction now.
    void rollback();
    // A transaction was opened by this scope and is still open.
    bool active() const { return m_active; }
    // The loaded catalog library offers transactions.
    static bool supported();

private:
    es_provider_t* m_provider = nullptr;
    bool m_active = false;
};

} // namespace edw
