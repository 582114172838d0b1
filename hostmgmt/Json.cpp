#include "hostmgmt/Json.h"

#include <new>

void checkJson(bool succeeded) {
    if (!succeeded) {
        throw std::bad_alloc();
    }
}

const char* stringMember(const json_t* object, const char* key) {
    const json_t* value = json_object_get(object, key);
    return json_is_null(value) ? "" : json_string_value(value);
}

bool isTrue(const json_t* object, const char* key) {
    return json_is_true(json_object_get(object, key));
}

json_int_t integerMember(const json_t* object, const char* key) {
    return json_integer_value(json_object_get(object, key));
}
