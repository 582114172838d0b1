#include "arkeon/memory_shortage.h"

#include "arkeon/console.h"
#include "arkeon/status.h"
#include "log/Report.h"

#include <unistd.h>
#include <utility>

namespace arkeon {

void showMemoryShortage() {
    static_assert(status::generalFailure == 20);
    Console& console = Console::standard();
    console.writePlainError("Exit Status 20: ");
    console.writePlainError(memoryShortageText);
    console.writePlainError("\n");
}

void endWithoutMemory() {
    static bool ending = false;
    // Logging may come back here: it has no memory for an exception either.
    if (!std::exchange(ending, true)) {
        showMemoryShortage();
        report({memoryShortageText});
    }
    _exit(status::generalFailure);
}

}  // namespace arkeon
