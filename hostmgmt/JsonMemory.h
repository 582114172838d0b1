#pragma once

/// Makes jansson take its memory from large blocks that nobody gives back before the process ends.
/// Reading a large reply takes a third less time so, and throwing it away none at all. To be called
/// before anything else of jansson; a process that reads replies without end must not. From then on
/// jansson's functions throw std::bad_alloc when memory is short.
void keepJsonUntilExit();

/// Whether it was called: JSON values need not be released then.
bool jsonIsKeptUntilExit();
