#pragma once

namespace arkeon {

/// From now on the process leaves no core file, and no other process of its user may read its
/// memory (PR_SET_DUMPABLE of prctl(2)): it is about to hold the login's token and a private key.
void keepMemoryPrivate();

}  // namespace arkeon
