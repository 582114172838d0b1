#pragma once

#include <cstdint>
#include <map>
#include <string>

/// The kind of value that an option takes.
enum parameterTypes : std::uint32_t {
    noValue = 0,        ///< a flag
    stringValue = 1,    ///< any text, or one of the allowed values
    pathValue = 2,      ///< an existing file system entry
    unsignedValue = 3,  ///< an unsigned 32-bit integer
};

/// One value that an option may have: the text to type, and the identifier under which the
/// catalogue has its translation for the usage text.
struct AllowedValue {
    const char* id;
    const char* text;
};

/// One option of a command.
struct PARAMETERS {
    std::uint32_t id;        ///< rows are checked and listed in ascending order of their ids
    std::string name;        ///< long name without "-"
    std::string alias;       ///< short name without "-"; may be empty
    std::uint32_t required;  ///< 1: must be given by name or alias; anything else: optional
    parameterTypes type;
    const AllowedValue* allowedValues = nullptr;  ///< null: any value
    std::uint32_t allowedCount = 0;
};

/// The options that a command accepts, by row id. Holds copies of the rows it is given; the first
/// row with an id wins.
class CParameterscmd : public std::map<std::uint32_t, PARAMETERS> {
public:
    CParameterscmd() = default;

    /// @throws CRuntimecmd code 3 when `list` is null
    CParameterscmd(const PARAMETERS* list, unsigned long count);

    CParameterscmd(const CParameterscmd&) = default;
    CParameterscmd& operator=(const CParameterscmd&) = default;
    virtual ~CParameterscmd() = default;

    /// Inserts further rows; nothing happens when `list` is null or `count` is 0.
    void addParameters(const PARAMETERS* list, unsigned long count);

    /// The first row, in the order of ids, whose name or alias is `option` without regard to case;
    /// `end()` when there is none.
    iterator find(const std::string& option);
    const_iterator find(const std::string& option) const;

    /// The type of an option; `noValue` if it is unknown.
    parameterTypes parameterType(const std::string& option) const;

    /// The catalogue's word for a type; valid until the next call.
    const char* usageStringFor(parameterTypes type) const;

    /// The allowed values of a row, as in " [ yes | no ]"; empty when there are none.
    std::string usageStringFor(const PARAMETERS& row) const;

    /// All options in the order of ids with their types and allowed values, in lines of at most 79
    /// columns.
    std::string usageString() const;
};
