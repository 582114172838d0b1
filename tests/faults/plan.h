/* Preloaded, this library lets one call of a function fail, or every call from one on. The
   environment says which:

   - AK_FAULT_CALL: the function's name; "allocation" and "library_allocation" stand for malloc and
     its like, called by the program or inside a library that it has loaded
   - AK_FAULT_AT: which of its calls, from 1
   - AK_FAULT_FOR_GOOD, when set: every later one too; no memory at all is left then
   - AK_FAULT_MARK: a file that is made when the first call fails
   - AK_FAULT_COUNTS: a file that gets "NAME COUNT" of every function when the program exits

   Or it lets the program walk past the faults: the run itself is not disturbed, but at each call
   two copies of its process go on, one with each fault.

   - AK_FAULT_WALK: a file that gets what comes of each copy, in the form that faults.py reads: the
     call, the status (negated when it is a signal), and what was written to both outputs
   - AK_FAULT_KIND: "allocation", or "library" for all other functions
   - AK_FAULT_SHARE: "N M", every Nth call only, from the Mth on

   A copy shares its connection, its input and its files with the run. Before it uses one of the
   first two it ends with status 99: only a run of its own can tell what comes of this fault. The
   same holds for a copy that takes longer than it may, which a signal ends.

   Calls are counted once the library has been set up, just before the program's own start. */

#pragma once

#include <stddef.h>

/* None of these stands in for a function of the program's. */
#pragma GCC visibility push(hidden)

/* A function by its name, and how often it was called. */
struct call {
    const char* name;
    unsigned long count;
    struct call* next;
};

/* Counts a call; whether it has to fail. */
int fails(struct call* call);

/* Whether what fails does so for good. */
int fails_for_good(void);

/* To be called before what a copy must not share with the run. */
void leave_copy(void);

/* How many calls into a loaded library are going on. */
extern int inside;

/* The C library's dlsym. */
void* real_dlsym(void* handle, const char* name);

/* The function that stands behind the one of this name here; `function` keeps it, null at first. */
void* real(void** function, const char* name);

#pragma GCC visibility pop
