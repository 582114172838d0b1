#include "hostmgmt/server/RestResources.h"

namespace {

std::string
resourceBelowHosts(OperationType operation, const std::string& hostId, const std::string& name) {
    switch (operation) {
    case OP_MAPPED_HOST_NAME:
        return "hostmappings?mappedhostname=" + name;
    case OP_HOST_ID:
    case OP_HOST:
        return hostId;
    case OP_APPROVED:
        return "hostmappings?isapproved=true";
    case OP_PENDING:
        return "hostmappings?isapproved=false";
    case OP_CONFLICT:
        return "hostmappings?isconflict=true";
    case OP_ALL_MAPPINGS:
        return "hostmappings";
    case OP_ADD_MAPPING:
    case OP_DELETE_MAPPING:  // the same resource; the method differs
        return hostId + "/hostmappings/" + name;
    case OP_HOST_APPROVED:
        return hostId + "/hostmappings?isapproved=true";
    case OP_MAPPED_APPROVED:
        return "hostmappings?mappedhostname=" + name + "&isapproved=true";
    case OP_COMMENT:
        return hostId + "/comment";
    case OP_ADD_HOST:
        return name;
    default:
        return {};  // the collection itself, for OP_ALL_HOSTS and, on purpose, any other number
    }
}

}  // namespace

std::string
resourceUri(OperationType operation, const std::string& hostId, const std::string& name) {
    return "arkeon/config/hosts/" + resourceBelowHosts(operation, hostId, name);
}
