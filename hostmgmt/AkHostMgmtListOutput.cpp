// The formats of `-list`.

#include "arkeon/console.h"
#include "arkeon/status.h"
#include "hostmgmt/AkHostMgmtList.h"
#include "hostmgmt/ListText.h"
#include "hostmgmt/LocalDate.h"

#include <array>
#include <cstring>
#include <utility>

using arkeon::Console;

namespace {

// Indented by 3, keys in the server's order.
constexpr std::size_t prettyFlags = JSON_INDENT(3) | JSON_PRESERVE_ORDER;

constexpr std::size_t hostIdWidth = 40;
constexpr std::size_t hostIdHeaderWidth = 39;
constexpr std::array<std::size_t, 7> columnWidths = {20, 14, 12, 21, 11, 30, 22};

int writeJsonPiece(const char* text, std::size_t size, void* console) {
    static_cast<Console*>(console)->write({text, size});
    return 0;
}

const char* yesOrNo(const json_t* object, const char* key) {
    return isTrue(object, key) ? yesText : noText;
}

// The primary name to look for; a host without one has the empty name.
const char* primaryNameOf(const json_t* host) {
    const char* name = stringMember(host, "hostName");
    return name == nullptr ? "" : name;
}

// A mapping without a name counts as one with the empty name.
const char* mappedName(const json_t* mapping) {
    const char* name = stringMember(mapping, "mappedHostName");
    return name == nullptr ? "" : name;
}

// Empty for JSON null, so that such a mapping belongs to neither pass of the unfiltered listing.
const char* approvalOf(const json_t* mapping) {
    const json_t* value = json_object_get(mapping, "isApproved");
    if (json_is_null(value)) {
        return "";
    }
    return json_is_true(value) ? yesText : noText;
}

// The inverse of "added manually"; null shows as "No".
const char* autoDiscovered(const json_t* mapping) {
    const json_t* value = json_object_get(mapping, "isAddedManually");
    return json_is_null(value) || json_is_true(value) ? noText : yesText;
}

void printTableLine(const std::array<const char*, columnWidths.size()>& columns) {
    Console::standard().write("\n");
    for (std::size_t i = 0; i < columns.size(); ++i) {
        printPadded(columns[i], columnWidths[i]);
    }
}

}  // namespace

const ListLabels& AkHostMgmtList::labels() {
    if (!fetchedLabels) {
        fetchedLabels.emplace();
    }
    return *fetchedLabels;
}

void AkHostMgmtList::printOutput(std::string response) {
    Console& console = Console::standard();
    if (isGiven(option::jsonCompact)) {
        console.write(response);
        console.write("\n");
        return;
    }
    const bool parsed = std::exchange(replyParsed, false) || loadReply(response) == 0;
    if (!parsed) {
        submitErrorStringForWebApi(arkeon::status::unreadableReply);
        return;
    }
    std::string().swap(response);  // the parsed reply is enough from here; the text may be large
    if (isGiven(option::json)) {
        checkJson(json_dump_callback(payload.get(), writeJsonPiece, &console, prettyFlags) == 0);
    } else if (!hostList) {
        printSingleHost(payload.get());
    } else if (ownMappings) {
        printMappedHostNames(payload.get(), "");
    } else {
        printHostList();
    }
}

void AkHostMgmtList::printSingleHost(json_t* host) {
    if (isGiven(option::shortOutput)) {
        printShortHeader();
    }
    printHost(host);
}

void AkHostMgmtList::printHostList() {
    const json_t* hosts = json_object_get(payload.get(), "hosts");
    if (json_array_size(hosts) == 0) {
        return;
    }
    if (isGiven(option::shortOutput)) {
        printShortHeader();
    }
    for (std::size_t i = 0; i < json_array_size(hosts); ++i) {
        printHost(json_array_get(hosts, i));
    }
}

void AkHostMgmtList::printShortHeader() {
    Console& console = Console::standard();
    console.write("\n");
    printPadded(labels()[HeaderType::hostId].c_str(), hostIdHeaderWidth);
    console.write(" ");
    console.write(labels()[HeaderType::mappedNames]);
}

void AkHostMgmtList::printHost(json_t* host) {
    if (isGiven(option::shortOutput)) {
        Console::standard().write("\n");
        printPadded(stringMember(host, "uuid"), hostIdWidth);
    } else {
        printLongBlock(host);
    }
    printMappedHostNames(host, primaryNameOf(host));
}

void AkHostMgmtList::printLongBlock(const json_t* host) {
    const auto line = [this](HeaderType label, const char* value) {
        printLongLine(labels()[label], value);
    };
    const auto text = [host, &line](HeaderType label, const char* key) {
        line(label, stringMember(host, key));
    };
    // Yes and No are fixed words here; in the mapping table they are the catalogue's.
    const auto flag = [host, &line](HeaderType label, const char* key) {
        line(label, yesOrNo(host, key));
    };
    text(HeaderType::hostId, "uuid");
    text(HeaderType::host, "hostName");
    text(HeaderType::masterServer, "masterServer");
    text(HeaderType::osType, "osType");
    text(HeaderType::operatingSystem, "osVersion");
    text(HeaderType::eebs, "installedEEBs");
    text(HeaderType::packages, "installedPackages");
    text(HeaderType::updatePlatform, "qxUpdatePlatform");
    text(HeaderType::hardwareDescription, "hwDescription");
    text(HeaderType::cpuArchitecture, "cpuArchitecture");
    text(HeaderType::version, "akuVersion");
    flag(HeaderType::secure, "isSecureEnabled");
    text(HeaderType::comment, "comment");
    flag(HeaderType::autoReissue, "autoReissue");
    text(HeaderType::trustVersion, "trustVersion");
    printAllowAutoReissueDetails(integerMember(host, "autoReissueDuration"));
    text(HeaderType::externalSubject, "externalCertificateSubject");
    flag(HeaderType::caIssued, "hasArkeonCaHostCertificate");
}

void AkHostMgmtList::printMappedHostNames(json_t* host, const char* primaryName) {
    Console& console = Console::standard();
    if (isGiven(option::shortOutput)) {
        printShortNames(host, primaryName);
    } else {
        const ListLabels& label = labels();
        console.write("\n");
        printTableLine(
            {label[HeaderType::mappedHostName].c_str(), label[HeaderType::approved].c_str(),
             label[HeaderType::conflict].c_str(), label[HeaderType::autoDiscovered].c_str(),
             label[HeaderType::shared].c_str(), label[HeaderType::createdOn].c_str(),
             label[HeaderType::lastUpdatedOn].c_str()});
        printSortedHostNames(host, primaryName);
    }
    console.write("\n");
}

void AkHostMgmtList::printShortNames(const json_t* host, const char* primaryName) {
    Console& console = Console::standard();
    const bool primaryFirst = primaryHostExist(host, primaryName) != 0;
    if (primaryFirst) {
        console.write(primaryName);
    }
    const json_t* mappings = json_object_get(host, "hostMappings");
    for (std::size_t i = 0; i < json_array_size(mappings); ++i) {
        const char* alternate = mappedName(json_array_get(mappings, i));
        if (std::strcmp(alternate, primaryName) == 0) {
            continue;
        }
        if (primaryFirst || i != 0) {
            console.write(", ");
        }
        console.write(alternate);
    }
}

int AkHostMgmtList::primaryHostExist(const json_t* host, const char* primaryName) const {
    const json_t* mappings = json_object_get(host, "hostMappings");
    for (std::size_t i = 0; i < json_array_size(mappings); ++i) {
        if (std::strcmp(mappedName(json_array_get(mappings, i)), primaryName) == 0) {
            return 1;
        }
    }
    return 0;
}

void AkHostMgmtList::printSortedHostNames(json_t* host, const char* /*primaryName*/) {
    json_t* mappings = json_object_get(host, "hostMappings");
    const unsigned long count = json_array_size(mappings);
    if (listOperation != OP_ALL_MAPPINGS) {
        printFilteredHostName(mappings, count, "");
        return;
    }
    printFilteredHostName(mappings, count, yesText);
    printFilteredHostName(mappings, count, noText);
}

void AkHostMgmtList::printFilteredHostName(
    json_t* mappings, unsigned long count, const std::string& filter) {
    for (unsigned long i = 0; i < count; ++i) {
        json_t* mapping = json_array_get(mappings, i);
        const char* approval = approvalOf(mapping);
        if (listOperation == OP_ALL_MAPPINGS && filter != approval) {
            continue;
        }
        printMappingRow(mapping, approval);
    }
}

void AkHostMgmtList::printMappingRow(json_t* mapping, const char* approval) {
    const ListLabels& label = labels();
    const DateText created = localDateText(integerMember(mapping, "createdOn"));
    const DateText updated = localDateText(integerMember(mapping, "updatedOn"));
    printTableLine(
        {getTrimmedString("mappedHostName", mapping), label.boolean(approval),
         label.boolean(yesOrNo(mapping, "isConflicting")), label.boolean(autoDiscovered(mapping)),
         label.boolean(yesOrNo(mapping, "isShared")), created.data(), updated.data()});
}
