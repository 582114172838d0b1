#include "cmdframework/Parameterscmd.h"

#include "cmdframework/CaseInsensitive.h"
#include "cmdframework/Messages.h"
#include "cmdframework/Runtimecmd.h"

#include <algorithm>
#include <array>

namespace {

constexpr std::size_t usageColumns = 79;

constexpr CatalogueText noneWord = catalogued("SmeFli0230N", "none");
constexpr CatalogueText stringWord = catalogued("SmeEmm0040N", "string");
constexpr CatalogueText unsignedIntegerWord = catalogued("SmeEmm0041N", "unsigned integer");

const CatalogueText& wordFor(parameterTypes type) {
    switch (type) {
    case stringValue:
    case pathValue:
        return stringWord;
    case unsignedValue:
        return unsignedIntegerWord;
    default:
        return noneWord;
    }
}

// Serves both overloads of `find`.
template <typename Table>
auto findRow(Table& table, const std::string& option) {
    return std::find_if(table.begin(), table.end(), [&option](const auto& entry) {
        const PARAMETERS& row = entry.second;
        return equalIgnoringCase(row.name, option) || equalIgnoringCase(row.alias, option);
    });
}

}  // namespace

CParameterscmd::CParameterscmd(const PARAMETERS* list, unsigned long count) {
    if (list == nullptr) {
        throw CRuntimecmd(parametersAreNull);
    }
    addParameters(list, count);
}

void CParameterscmd::addParameters(const PARAMETERS* list, unsigned long count) {
    if (list == nullptr) {
        return;
    }
    std::for_each(list, list + count, [this](const PARAMETERS& row) { emplace(row.id, row); });
}

CParameterscmd::iterator CParameterscmd::find(const std::string& option) {
    return findRow(*this, option);
}

CParameterscmd::const_iterator CParameterscmd::find(const std::string& option) const {
    return findRow(*this, option);
}

parameterTypes CParameterscmd::parameterType(const std::string& option) const {
    const auto row = find(option);
    return row == end() ? noValue : row->second.type;
}

const char* CParameterscmd::usageStringFor(parameterTypes type) const {
    static std::array<char, 1024> buffer;
    const CatalogueText& word = wordFor(type);
    getMessage(buffer.data(), buffer.size(), word.id, word.text);
    return buffer.data();
}

std::string CParameterscmd::usageStringFor(const PARAMETERS& row) const {
    if (row.allowedValues == nullptr || row.allowedCount == 0 || row.type == noValue) {
        return {};
    }
    std::string text;
    for (std::uint32_t i = 0; i < row.allowedCount; ++i) {
        const AllowedValue& value = row.allowedValues[i];
        text += (i == 0 ? " [ " : "| ");
        text += messageText({value.id, value.text}) + " ";
    }
    return text + "]";
}

std::string CParameterscmd::usageString() const {
    std::string text;
    std::size_t column = 0;
    for (const auto& [id, row] : *this) {
        std::string option = "-" + row.name;
        option += row.alias.empty() ? "" : "|-" + row.alias;
        option += std::string(" ") + usageStringFor(row.type) + usageStringFor(row);
        if (!text.empty()) {
            const bool fits = column + 1 + option.size() <= usageColumns;
            text += fits ? " " : "\n";
            column = fits ? column + 1 : 0;
        }
        text += option;
        column += option.size();
    }
    return text;
}
