#pragma once

#include "hostmgmt/JsonMemory.h"

#include <jansson.h>
#include <memory>

/// Gives a reference to a JSON value back, unless the memory stays taken until the run ends.
struct JsonRelease {
    void operator()(json_t* value) const {
        if (!jsonIsKeptUntilExit()) {
            json_decref(value);
        }
    }
};

/// A counted reference to a JSON value.
using JsonRef = std::unique_ptr<json_t, JsonRelease>;

/// For what jansson fails in only for want of memory.
/// @throws std::bad_alloc when it did not succeed
void checkJson(bool succeeded);

/// The text of a string member: empty for JSON null, a null pointer when the member is absent or no
/// string. Owned by `object`.
const char* stringMember(const json_t* object, const char* key);

/// Whether a member is JSON true.
bool isTrue(const json_t* object, const char* key);

/// The value of an integer member; 0 when it is absent or no integer.
json_int_t integerMember(const json_t* object, const char* key);
