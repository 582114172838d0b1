#pragma once

#include "cmdframework/Argscmd.h"
#include "cmdframework/Parameterscmd.h"

/// The options of the command line, without their leading "-".

/// The tool's name in its own messages.
inline constexpr const char* commandName = "akhostmgmt";

/// The options that choose the operation.
namespace topLevelAkHostMgmtOptions {

inline constexpr const char* help = "help";
inline constexpr const char* help_alias = "h";
inline constexpr const char* add = "add";
inline constexpr const char* add_alias = "a";
inline constexpr const char* delete_cmd = "delete";
inline constexpr const char* delete_alias = "d";
inline constexpr const char* lst = "list";
inline constexpr const char* list_alias = "li";
inline constexpr const char* addcomment = "addcomment";
inline constexpr const char* addcomment_alias = "ac";
inline constexpr const char* deletecomment = "deletecomment";
inline constexpr const char* deletecomment_alias = "dc";
inline constexpr const char* setautoreissuecert = "allowautoreissuecert";
inline constexpr const char* setautoreissuecert_alias = "aa";
inline constexpr const char* addhost = "addhost";
inline constexpr const char* addhost_alias = "ah";
inline constexpr const char* updatehost = "updatehost";
inline constexpr const char* updatehost_alias = "uh";

}  // namespace topLevelAkHostMgmtOptions

/// The options of the operations.
namespace individualAkHostMgmtCommandOptions {

inline constexpr const char* server = "server";
inline constexpr const char* server_alias = "s";
inline constexpr const char* hostid = "hostid";
inline constexpr const char* hostid_alias = "i";
inline constexpr const char* host = "host";
inline constexpr const char* host_alias = "n";
inline constexpr const char* reason = "reason";
inline constexpr const char* reason_alias = "r";
inline constexpr const char* help = "help";
inline constexpr const char* help_alias = "h";

inline constexpr const char* mappingname = "mappingname";
inline constexpr const char* mappingname_alias = "hm";
inline constexpr const char* isshared = "isshared";
inline constexpr const char* isshared_alias = "is";
inline constexpr const char* newhostname = "newhostname";
inline constexpr const char* newhostname_alias = "nh";
inline constexpr const char* comment = "comment";
inline constexpr const char* comment_alias = "c";
inline constexpr const char* autoreissue = "autoreissue";
inline constexpr const char* autoreissue_alias = "ar";

inline constexpr const char* short_output = "short";
inline constexpr const char* short_output_alias = "l";
inline constexpr const char* json = "json";
inline constexpr const char* json_alias = "j";
inline constexpr const char* json_compact = "json_compact";
inline constexpr const char* json_compact_alias = "jc";
inline constexpr const char* approved = "approved";
inline constexpr const char* approved_alias = "ap";
inline constexpr const char* pending = "pending";
inline constexpr const char* pending_alias = "p";
inline constexpr const char* conflict = "conflict";
inline constexpr const char* conflict_alias = "cf";
inline constexpr const char* apvmappings = "apvmappings";
inline constexpr const char* apvmappings_alias = "am";

}  // namespace individualAkHostMgmtCommandOptions

/// An option with both its names.
struct OptionName {
    const char* name;
    const char* alias;
};

/// The operations, for the driver's table and for their own classes.
namespace operation {

namespace names = topLevelAkHostMgmtOptions;

inline constexpr OptionName help{names::help, names::help_alias};
inline constexpr OptionName add{names::add, names::add_alias};
inline constexpr OptionName delete_cmd{names::delete_cmd, names::delete_alias};
inline constexpr OptionName lst{names::lst, names::list_alias};
inline constexpr OptionName addcomment{names::addcomment, names::addcomment_alias};
inline constexpr OptionName deletecomment{names::deletecomment, names::deletecomment_alias};
inline constexpr OptionName setautoreissuecert{
    names::setautoreissuecert, names::setautoreissuecert_alias};
inline constexpr OptionName addhost{names::addhost, names::addhost_alias};
inline constexpr OptionName updatehost{names::updatehost, names::updatehost_alias};

}  // namespace operation

/// The other options, for the operations' rules.
namespace option {

namespace names = individualAkHostMgmtCommandOptions;

inline constexpr OptionName server{names::server, names::server_alias};
inline constexpr OptionName hostid{names::hostid, names::hostid_alias};
inline constexpr OptionName host{names::host, names::host_alias};
inline constexpr OptionName reason{names::reason, names::reason_alias};
inline constexpr OptionName help{names::help, names::help_alias};
inline constexpr OptionName mappingname{names::mappingname, names::mappingname_alias};
inline constexpr OptionName isshared{names::isshared, names::isshared_alias};
inline constexpr OptionName newhostname{names::newhostname, names::newhostname_alias};
inline constexpr OptionName comment{names::comment, names::comment_alias};
inline constexpr OptionName autoreissue{names::autoreissue, names::autoreissue_alias};
inline constexpr OptionName shortOutput{names::short_output, names::short_output_alias};
inline constexpr OptionName json{names::json, names::json_alias};
inline constexpr OptionName jsonCompact{names::json_compact, names::json_compact_alias};
inline constexpr OptionName approved{names::approved, names::approved_alias};
inline constexpr OptionName pending{names::pending, names::pending_alias};
inline constexpr OptionName conflict{names::conflict, names::conflict_alias};
inline constexpr OptionName apvmappings{names::apvmappings, names::apvmappings_alias};

}  // namespace option

/// The row of an option table. No table marks an option as required: that is a rule of the
/// operation.
inline PARAMETERS optionRow(std::uint32_t id, OptionName option, parameterTypes type) {
    return {id, option.name, option.alias, 0, type};
}

/// Whether an option is on the command line, by either name.
inline bool isGiven(const CArgscmd& args, OptionName option) {
    return args.exists(option.name) || args.exists(option.alias);
}

/// The option's name if that is on the command line, else its alias.
inline const char* nameOrAlias(const CArgscmd& args, OptionName option) {
    return args.exists(option.name) ? option.name : option.alias;
}

/// The value under the option's name if that is on the command line, else the one under its alias.
inline std::string valueOf(const CArgscmd& args, OptionName option) {
    return args.argValue(nameOrAlias(args, option));
}

/// The same as an unsigned 32-bit integer.
/// @throws CUsagecmd code 8 (no value) or 7 (not such a number)
inline unsigned int numberOf(const CArgscmd& args, OptionName option) {
    return args.numericValue(nameOrAlias(args, option));
}
