#include "devserver/AuditText.h"

#include "devserver/Text.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <ctime>

namespace devserver {

namespace {

using Row = std::array<std::string, 7>;
using Widths = std::array<std::size_t, std::tuple_size_v<Row>>;

std::string timeText(std::int64_t milliseconds) {
    const std::time_t seconds = milliseconds / 1000;
    std::tm parts{};
    gmtime_r(&seconds, &parts);
    std::array<char, 32> date{};
    std::strftime(date.data(), date.size(), "%Y-%m-%dT%H:%M:%S", &parts);
    std::array<char, 8> fraction{};
    static_cast<void>(std::snprintf(
        fraction.data(), fraction.size(), ".%03dZ", static_cast<int>(milliseconds % 1000)));
    return std::string(date.data()) + fraction.data();
}

Row rowOf(const AuditEntry& entry) {
    return {timeText(entry.time),
            text::visible(entry.who),
            text::visible(entry.method),
            std::to_string(entry.status),
            std::to_string(entry.errorCode),
            text::visible(entry.resource),
            text::visible(entry.reason)};
}

/// Letters, that is bytes that do not continue one; good enough to align columns.
std::size_t width(const std::string& text) {
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char byte) {
        return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U;
    }));
}

std::string line(const Row& row, const Widths& widths) {
    std::string text;
    for (std::size_t i = 0; i < row.size(); ++i) {
        text += row[i];
        if (i + 1 < row.size()) {
            text.append(widths[i] - width(row[i]) + 2, ' ');
        }
    }
    text.erase(text.find_last_not_of(' ') + 1);
    return text + '\n';
}

}  // namespace

std::string auditText(const std::vector<AuditEntry>& entries) {
    std::vector<Row> rows{{"WHEN", "WHO", "METHOD", "STATUS", "CODE", "RESOURCE", "REASON"}};
    for (const AuditEntry& entry : entries) {
        rows.push_back(rowOf(entry));
    }
    Widths widths{};
    for (const Row& row : rows) {
        for (std::size_t i = 0; i < row.size(); ++i) {
            widths[i] = std::max(widths[i], width(row[i]));
        }
    }
    std::string text;
    for (const Row& row : rows) {
        text += line(row, widths);
    }
    return text;
}

}  // namespace devserver
