#pragma once

// The shared test support under the names the element editor's tests use.

#include "../support/fake_host.h"
#include "../support/recording_messenger.h"
#include "../support/temp_catalog.h"

namespace testing {
using ScopedMessenger = RecordingMessenger;
} // namespace testing
