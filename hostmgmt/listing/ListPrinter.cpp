#include "hostmgmt/listing/ListPrinter.h"

#include "arkeon/console.h"
#include "hostmgmt/Json.h"
#include "hostmgmt/listing/ListText.h"
#include "hostmgmt/listing/LocalDate.h"

#include <array>
#include <cstring>

using arkeon::Console;

namespace {

constexpr std::size_t hostIdWidth = 40;
constexpr std::size_t hostIdHeaderWidth = 39;
constexpr std::array<std::size_t, 7> columnWidths = {20, 14, 12, 21, 11, 30, 22};

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

bool hasMapping(const json_t* host, const char* name) {
    const json_t* mappings = json_object_get(host, "hostMappings");
    for (std::size_t i = 0; i < json_array_size(mappings); ++i) {
        if (std::strcmp(mappedName(json_array_get(mappings, i)), name) == 0) {
            return true;
        }
    }
    return false;
}

void ListPrinter::printSingleHost(json_t* host) const {
    if (shortFormat_) {
        printShortHeader();
    }
    printHost(host);
}

void ListPrinter::printHosts(const json_t* hosts) const {
    if (json_array_size(hosts) == 0) {
        return;
    }
    if (shortFormat_) {
        printShortHeader();
    }
    for (std::size_t i = 0; i < json_array_size(hosts); ++i) {
        printHost(json_array_get(hosts, i));
    }
}

void ListPrinter::printShortHeader() const {
    Console& console = Console::standard();
    console.write("\n");
    printPadded(labels_[HeaderType::hostId].c_str(), hostIdHeaderWidth);
    console.write(" ");
    console.write(labels_[HeaderType::mappedNames]);
}

void ListPrinter::printHost(json_t* host) const {
    if (shortFormat_) {
        Console::standard().write("\n");
        printPadded(stringMember(host, "uuid"), hostIdWidth);
    } else {
        printLongBlock(host);
    }
    printMappings(host, primaryNameOf(host));
}

void ListPrinter::printLongBlock(const json_t* host) const {
    const auto line = [this](HeaderType label, const char* value) {
        printLongLine(labels_[label], value);
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
    printReissueValidity(
        labels_[HeaderType::autoReissueValidity], integerMember(host, "autoReissueDuration"));
    text(HeaderType::externalSubject, "externalCertificateSubject");
    flag(HeaderType::caIssued, "hasArkeonCaHostCertificate");
}

void ListPrinter::printMappings(json_t* host, const char* primaryName) const {
    Console& console = Console::standard();
    if (shortFormat_) {
        printShortNames(host, primaryName);
    } else {
        const ListLabels& label = labels_;
        console.write("\n");
        printTableLine(
            {label[HeaderType::mappedHostName].c_str(), label[HeaderType::approved].c_str(),
             label[HeaderType::conflict].c_str(), label[HeaderType::autoDiscovered].c_str(),
             label[HeaderType::shared].c_str(), label[HeaderType::createdOn].c_str(),
             label[HeaderType::lastUpdatedOn].c_str()});
        printSortedRows(host);
    }
    console.write("\n");
}

void ListPrinter::printShortNames(const json_t* host, const char* primaryName) const {
    Console& console = Console::standard();
    const bool primaryFirst = hasMapping(host, primaryName);
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

void ListPrinter::printSortedRows(json_t* host) const {
    json_t* mappings = json_object_get(host, "hostMappings");
    const unsigned long count = json_array_size(mappings);
    if (!approvedFirst_) {
        printRows(mappings, count, "");
        return;
    }
    printRows(mappings, count, yesText);
    printRows(mappings, count, noText);
}

void ListPrinter::printRows(
    json_t* mappings, unsigned long count, const std::string& filter) const {
    for (unsigned long i = 0; i < count; ++i) {
        json_t* mapping = json_array_get(mappings, i);
        const char* approval = approvalOf(mapping);
        if (approvedFirst_ && filter != approval) {
            continue;
        }
        printMappingRow(mapping, approval);
    }
}

void ListPrinter::printMappingRow(json_t* mapping, const char* approval) const {
    const ListLabels& label = labels_;
    const DateText created = localDateText(integerMember(mapping, "createdOn"));
    const DateText updated = localDateText(integerMember(mapping, "updatedOn"));
    printTableLine(
        {getTrimmedString("mappedHostName", mapping), label.boolean(approval),
         label.boolean(yesOrNo(mapping, "isConflicting")), label.boolean(autoDiscovered(mapping)),
         label.boolean(yesOrNo(mapping, "isShared")), created.data(), updated.data()});
}
