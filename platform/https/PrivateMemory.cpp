#include "https/PrivateMemory.h"

#include "log/Report.h"

#include <sys/prctl.h>

namespace arkeon {

void keepMemoryPrivate() {
    if (prctl(PR_SET_DUMPABLE, 0) != 0) {
        report({"the process's memory cannot be made private"});
    }
}

}  // namespace arkeon
