#pragma once

#include "arkeon/status.h"

#include <jansson.h>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

class CLogcmd;

/// Releases a reference to a JSON value.
struct JsonRelease {
    void operator()(json_t* value) const { json_decref(value); }
};

/// A counted reference to a JSON value.
using JsonRef = std::unique_ptr<json_t, JsonRelease>;

/// For functions of jansson that fail only when out of memory.
/// @throws std::bad_alloc if `succeeded` is false
void checkJson(bool succeeded);

/// The text of a string member: empty for JSON null, a null pointer if the member is absent or not
/// a string. Owned by `object`.
const char* stringMember(const json_t* object, const char* key);

/// Whether a member is JSON true.
bool isTrue(const json_t* object, const char* key);

/// The value of an integer member; 0 if it is absent or not an integer.
json_int_t integerMember(const json_t* object, const char* key);

/// A JSON value to build or to read: the body of a request, or a server's reply.
class JsonPayload {
public:
    /// An empty object. `log` must outlive it.
    explicit JsonPayload(const CLogcmd& log);

    /// The value, for jansson's functions; null after a failed `load`.
    operator json_t*() const { return root_.get(); }

    /// Sets a member; replaces an earlier one. The value must be an object, as it is until it is
    /// replaced by `load`.
    /// @throws CUsagecmd code 10 with the key if the value is not UTF-8, which JSON must be
    ///         (RFC 8259, section 8.1)
    void set(const char* key, const char* value);

    /// The same for any value; takes over the caller's reference.
    void set(const char* key, json_t* value);

    /// The value in compact form; empty if it is null.
    std::string compactText() const;

    /// Replaces the value by the parsed text. A NUL byte in it is not JSON.
    /// @return success; 7610 if the text is not JSON: the value is then null, and
    ///         the text is logged
    arkeon::Status load(std::string_view text);

    /// Reads a member of the object.
    /// @return success; 7610 if it is absent or of another type: `value` is then unchanged
    arkeon::Status readInteger(const char* key, long& value) const;
    arkeon::Status readString(const char* key, std::string& value) const;

    /// Moves the value out.
    JsonRef take() { return std::move(root_); }

private:
    const CLogcmd& log_;
    JsonRef root_;
};
