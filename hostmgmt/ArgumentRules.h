#pragma once

#include "cmdframework/Messages.h"
#include "cmdframework/Usagecmd.h"
#include "hostmgmt/OptionNames.h"

#include <cstddef>
#include <string>

class CLogcmd;

/// Limits of the server's interface, in bytes.
inline constexpr std::size_t maxHostName = 1024;
inline constexpr std::size_t maxMappingName = 1024;
inline constexpr std::size_t maxReason = 512;
inline constexpr std::size_t maxComment = 2048;

inline constexpr CatalogueText hostNameHasSlashes =
    catalogued("SmeHmm0018N", "Host name must not contain slashes ('/' or '\\')");
inline constexpr CatalogueText hostIdHasSlashes =
    catalogued("SmeHmm0019N", "Host ID must not contain slashes ('/' or '\\')");

/// The rules on arguments that the operations share.
///
/// Each throws CUsagecmd if it is broken. The first three raise a message of the framework; the
/// others build a message of their own and log it first.
class ArgumentRules {
public:
    /// Both must outlive the rules.
    ArgumentRules(const CArgscmd& args, const CLogcmd& log) : args_(args), log_(log) {}

    /// The long name "help" is checked by the framework.
    void rejectHelpAlias() const;
    void requireOption(OptionName option) const;
    void rejectInvalidUtf8(OptionName option) const;

    void rejectBoth(OptionName first, OptionName second) const;
    void requireOneOf(OptionName first, OptionName second) const;
    void rejectSlashes(OptionName option, const CatalogueText& message) const;
    void rejectLongerThan(std::size_t limit, OptionName option) const;
    [[noreturn]] void reject(usageExceptions code, const std::string& message) const;

private:
    const CArgscmd& args_;
    const CLogcmd& log_;
};
