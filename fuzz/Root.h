#pragma once

#include "support/Environment.h"
#include "support/TempDir.h"

namespace fuzz {

/// The folder that ARKEON_ROOT names from the first call on: the files below it are the target's.
inline const support::TempDir& root() {
    static const support::TempDir folder;
    static const support::ScopedVariable variable("ARKEON_ROOT", folder.path());
    return folder;
}

}  // namespace fuzz
