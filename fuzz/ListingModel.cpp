#include "fuzz/ListingModel.h"

#include <array>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <vector>

namespace fuzz {
namespace {

std::string textOf(const json_t* object, const char* key) {
    const json_t* value = json_object_get(object, key);
    if (json_is_null(value)) {
        return "";
    }
    return json_is_string(value) ? json_string_value(value) : "(null)";
}

/// A text that is compared: where there is none, it is empty.
std::string nameOf(const json_t* object, const char* key) {
    const json_t* value = json_object_get(object, key);
    return json_is_string(value) ? json_string_value(value) : "";
}

json_int_t numberOf(const json_t* object, const char* key) {
    return json_integer_value(json_object_get(object, key));
}

std::string yes(const json_t* object, const char* key) {
    return json_is_true(json_object_get(object, key)) ? "Yes" : "No";
}

std::string padded(const std::string& text, std::size_t width) {
    return text + std::string(text.size() < width ? width - text.size() : 0, ' ');
}

std::string line(const char* label, const std::string& value) {
    return "\n" + padded(label, 40) + " : " + value;
}

std::vector<const json_t*> itemsOf(const json_t* object, const char* key) {
    std::vector<const json_t*> items;
    const json_t* array = json_object_get(object, key);
    for (std::size_t i = 0; i < json_array_size(array); ++i) {
        items.push_back(json_array_get(array, i));
    }
    return items;
}

/// JSON texts are UTF-8: only continuation bytes stand inside a letter.
std::string trimmed(std::string text) {
    if (text.size() < 16) {
        return text;
    }
    std::size_t end = 15;
    while ((static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U) {
        --end;
    }
    return text.substr(0, end) + "~";
}

std::string row(const std::array<std::string, 7>& columns) {
    constexpr std::array<std::size_t, 7> widths = {20, 14, 12, 21, 11, 30, 22};
    std::string text = "\n";
    for (std::size_t i = 0; i < columns.size(); ++i) {
        text += padded(columns[i], widths[i]);
    }
    return text;
}

/// Null is neither approved nor pending; in the table it is shown as a "No".
std::string approvalOf(const json_t* mapping) {
    const json_t* value = json_object_get(mapping, "isApproved");
    return json_is_null(value) ? "" : yes(mapping, "isApproved");
}

std::string discovered(const json_t* mapping) {
    const json_t* manual = json_object_get(mapping, "isAddedManually");
    return json_is_null(manual) || json_is_true(manual) ? "No" : "Yes";
}

std::string mappingRow(const json_t* mapping) {
    return row(
        {trimmed(textOf(mapping, "mappedHostName")), yes(mapping, "isApproved"),
         yes(mapping, "isConflicting"), discovered(mapping), yes(mapping, "isShared"),
         plainDate(numberOf(mapping, "createdOn")), plainDate(numberOf(mapping, "updatedOn"))});
}

std::string table(const json_t* host, Listed listed) {
    const std::vector<const json_t*> mappings = itemsOf(host, "hostMappings");
    std::string text = "\n" + row(
                                  {"Mapped Host Name", "Approved", "Conflict", "Auto-discovered",
                                   "Shared", "Created On", "Last Updated On"});
    for (const char* pass : {"Yes", "No"}) {
        for (const json_t* mapping : mappings) {
            const bool shown =
                listed == Listed::all ? approvalOf(mapping) == pass : std::strcmp(pass, "Yes") == 0;
            text += shown ? mappingRow(mapping) : "";
        }
    }
    return text + "\n";
}

std::string validity(json_int_t milliseconds) {
    return milliseconds == 0 ? "" : plainDate(milliseconds);
}

std::string block(const json_t* host) {
    return line("Host ID", textOf(host, "uuid")) + line("Host", textOf(host, "hostName")) +
           line("Master Server", textOf(host, "masterServer")) +
           line("OS Type", textOf(host, "osType")) +
           line("Operating System", textOf(host, "osVersion")) +
           line("Arkeon EEBs", textOf(host, "installedEEBs")) +
           line("Arkeon Packages", textOf(host, "installedPackages")) +
           line("QxUpdate Platform", textOf(host, "qxUpdatePlatform")) +
           line("Hardware Description", textOf(host, "hwDescription")) +
           line("CPU Architecture", textOf(host, "cpuArchitecture")) +
           line("Version", textOf(host, "akuVersion")) +
           line("Secure", yes(host, "isSecureEnabled")) + line("Comment", textOf(host, "comment")) +
           line("Allow Auto Reissue Certificate", yes(host, "autoReissue")) +
           line("Trust Version", textOf(host, "trustVersion")) +
           line(
               "Allow Auto Reissue Certificate Validity",
               validity(numberOf(host, "autoReissueDuration"))) +
           line(
               "Subject Name of External Certificate", textOf(host, "externalCertificateSubject")) +
           line("Arkeon CA Issued Certificate", yes(host, "hasArkeonCaHostCertificate"));
}

/// The primary name first, where it is one of the names; the others in their order.
std::string names(const json_t* host, const std::string& primary) {
    std::vector<std::string> others;
    bool primaryFirst = false;
    for (const json_t* mapping : itemsOf(host, "hostMappings")) {
        others.push_back(nameOf(mapping, "mappedHostName"));
        primaryFirst = primaryFirst || others.back() == primary;
    }
    std::string text = primaryFirst ? primary : "";
    for (std::size_t i = 0; i < others.size(); ++i) {
        if (others[i] != primary) {
            text += (primaryFirst || i != 0 ? ", " : "") + others[i];
        }
    }
    return text + "\n";
}

std::string shortHost(const json_t* host) {
    return "\n" + padded(textOf(host, "uuid"), 40) + names(host, nameOf(host, "hostName"));
}

}  // namespace

std::string plainDate(json_int_t milliseconds) {
    const std::time_t seconds = milliseconds / 1000;
    std::tm local{};
    std::array<char, 100> text{};
    if (localtime_r(&seconds, &local) != nullptr) {
        std::strftime(text.data(), text.size(), "%b %d, %Y %I:%M:%S %p", &local);
    }
    return text.data();
}

std::string longListing(const json_t* reply, Listed listed) {
    if (listed == Listed::ownNames) {
        return table(reply, listed);
    }
    if (listed == Listed::oneHost) {
        return block(reply) + table(reply, listed);
    }
    std::string text;
    for (const json_t* host : itemsOf(reply, "hosts")) {
        text += block(host) + table(host, listed);
    }
    return text;
}

std::string shortListing(const json_t* reply, Listed listed) {
    if (listed == Listed::ownNames) {
        return names(reply, "");
    }
    std::string text = "\n" + padded("Host ID", 39) + " Mapped Names";
    if (listed == Listed::oneHost) {
        return text + shortHost(reply);
    }
    for (const json_t* host : itemsOf(reply, "hosts")) {
        text += shortHost(host);
    }
    return text;
}

}  // namespace fuzz
