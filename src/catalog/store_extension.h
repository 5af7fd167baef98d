#pragma once

// The embedded catalog store has functions of its own (prefixed esx_) that other catalog
// access modules lack. They are looked up at run time in the module that holds the catalog
// API the program is linked with, whatever scope the loader put it in, and callers do
// without them when they are absent.

namespace edw {

// The address of the store's function name, or null when the module has none.
void* storeFunction(const char* name);

template <class Fn> Fn storeFunction(const char* name)
{
    return reinterpret_cast<Fn>(storeFunction(name));
}

} // namespace edw
