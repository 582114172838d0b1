#pragma once

/// Makes a process without the memory for an exception end with the status line of the lack of
/// memory and status 20, where the runtime would abort it. Other ends by the runtime's termination
/// handler stay as they are. To be called at the start.
void endCleanlyWithoutMemory();
