// The shared library is assembled from the subsystem archives; this unit only gives the
// target a source of its own.
