#include "driver/Termination.h"

#include "arkeon/memory_shortage.h"
#include "cmdframework/Runtimecmd.h"
#include "cmdframework/Usagecmd.h"

#include <cstdlib>
#include <cxxabi.h>
#include <exception>
#include <new>
#include <typeinfo>

namespace {

std::terminate_handler handlerBefore = nullptr;

// Without the memory for an exception the current one is none, or one that is being handled: the
// driver handles those of the framework and the lack of memory.
bool isMemoryShortage(const std::type_info* current) {
    return current == nullptr || *current == typeid(std::bad_alloc) ||
           *current == typeid(CUsagecmd) || *current == typeid(CRuntimecmd);
}

[[noreturn]] void onTerminate() {
    if (isMemoryShortage(abi::__cxa_current_exception_type())) {
        arkeon::endWithoutMemory();
    }
    handlerBefore();
    std::abort();
}

}  // namespace

void endCleanlyWithoutMemory() {
    if (handlerBefore == nullptr) {
        handlerBefore = std::set_terminate(onTerminate);
    }
}
