#pragma once

// The host's documents as the catalog, editor and exchange cores see them, answered through the
// host's new API.

class QString;

// Installs the host documents for the catalog cores, unless something else is installed.
void install_host_documents();
