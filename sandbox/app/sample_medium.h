#pragma once

typedef struct es_provider es_provider_t;

namespace sandbox {

// Standards of the engineering systems' fittings as packets of the catalog: pipes, bends,
// tees and reducers, their elements carrying the variant attribute "OVK_VARIANT" (one pipe
// standard has none). Packets already present are left alone, so an older sample catalog gets
// them on its next opening. False when a packet could not be written.
bool addMediumStandards(es_provider_t* provider);

} // namespace sandbox
