#include "https/PrivateMemory.h"

#include <sys/prctl.h>

namespace arkeon {

void keepMemoryPrivate() {
    prctl(PR_SET_DUMPABLE, 0);
}

}  // namespace arkeon
