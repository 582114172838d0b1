#pragma once

#include <jansson.h>
#include <memory>

namespace devserver {

/// Gives a reference to a JSON value back.
struct ReleaseJson {
    void operator()(json_t* json) const { json_decref(json); }
};

/// A counted reference to a JSON value.
using JsonPtr = std::unique_ptr<json_t, ReleaseJson>;

}  // namespace devserver
