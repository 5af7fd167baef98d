#pragma once

// Whether a process of this id still runs. The working folders and partial archives of an
// operation carry its process id, so that a later operation can tell the leftovers of a
// killed or crashed process from the files of one that is still at work.
namespace exchange {

bool processIsRunning(long long pid);

} // namespace exchange
