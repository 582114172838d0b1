/* Preloaded into the tool, this library makes one call of a function fail, or every call from one
   on. Environment variables say which:

   - AK_FAULT_CALL: the function's name; "operator_new" and "argument_copy" are allocations, see
     failing_allocations.cpp
   - AK_FAULT_AT: which of its calls, from 1
   - AK_FAULT_FOR_GOOD, if set: all later calls, too
   - AK_FAULT_MARK: a file that is created when the first call fails
   - AK_FAULT_COUNTS: a file that receives "NAME COUNT" of every function when the tool exits

   Calls are counted once this library is initialized, just before the tool's static objects are
   constructed. */

#pragma once

#ifdef __cplusplus
extern "C" {
#endif
/* Otherwise these would replace functions of the tool that have the same name. */
#pragma GCC visibility push(hidden)

/* A function by its name, and how often it was called. */
struct call {
    const char* name;
    unsigned long count;
    struct call* next;
};

/* Counts a call; returns whether it must fail. */
int fails(struct call* call);

/* Returns whether AK_FAULT_FOR_GOOD is set; false once the tool has exited. */
int fails_for_good(void);

/* Returns the path of the library that contains the address, "" for the executable. */
const char* object_of(const void* address);

/* Returns the function of this name that this library hides; caches it in `function`, which is null
   at first. */
void* real(void** function, const char* name);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
