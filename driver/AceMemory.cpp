// The two functions of ACE that the program calls, made from ACE's own headers as ACE makes them.
// They stand here because loading the ACE library for them takes longer than all else that a run
// without a request does.

#include <ace/OS_Memory.h>
#include <ace/OS_NS_stdlib.h>

ACE_BEGIN_VERSIONED_NAMESPACE_DECL

void* ACE_OS::malloc(std::size_t size) {
    return ACE_MALLOC_FUNC(size);
}

void ACE_OS::free(void* memory) {
    ACE_FREE_FUNC(ACE_MALLOC_T(memory));
}

ACE_END_VERSIONED_NAMESPACE_DECL
