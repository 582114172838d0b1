#include "log/LogLine.h"

#include "arkeon/text.h"
#include "text/Ascii.h"
#include "text/Utf8.h"

#include <array>

namespace arkeon {
namespace {

void appendControl(std::string& line, char byte) {
    if (byte == '\n') {
        line += "\\n";
    } else if (byte == '\t') {
        line += "\\t";
    } else {
        appendHex(line, byte);
    }
}

/// C0 and DEL; C1 as well as a single byte, which a terminal in an 8-bit character set obeys.
bool isControlByte(char byte) {
    const unsigned value = static_cast<unsigned char>(byte);
    return isControl(byte) || (value >= 0x80U && value <= 0x9FU);
}

/// Appends `text` with its control characters in a visible form; other bytes stay as they are.
void appendEscaped(std::string& line, std::string_view text) {
    while (!text.empty()) {
        const std::size_t length = utf8CharacterLength(text);
        if (startsWithUtf8C1(text)) {
            appendHex(line, text[0]);
            appendHex(line, text[1]);
        } else if (length <= 1 && isControlByte(text[0])) {
            appendControl(line, text[0]);
        } else {
            line += text.substr(0, length == 0 ? 1 : length);
        }
        text.remove_prefix(length == 0 ? 1 : length);
    }
}

std::string formatTime(const std::tm& local, const char* format) {
    std::array<char, 64> text{};
    const std::size_t length = std::strftime(text.data(), text.size(), format, &local);
    return {text.data(), length};
}

void appendStamp(std::string& line, const LogStamp& stamp) {
    constexpr long nanosecondsPerMillisecond = 1'000'000;
    std::tm local{};
    localTime(stamp.time.tv_sec, &local);
    std::array<char, 8> milliseconds{};
    boundedFormat(
        milliseconds.data(), milliseconds.size(), ".%03ld",
        stamp.time.tv_nsec / nanosecondsPerMillisecond);
    line += formatTime(local, "%Y-%m-%dT%H:%M:%S") + milliseconds.data() + formatTime(local, "%z");
    line += ' ' + std::to_string(stamp.process) + ' ' + std::to_string(stamp.level) + ' ';
    appendEscaped(line, stamp.name);
    line += ": ";
}

/// The text's length without one final newline.
std::size_t textLength(std::initializer_list<std::string_view> parts) {
    std::size_t length = 0;
    bool endsInNewline = false;
    for (const std::string_view part : parts) {
        length += part.size();
        endsInNewline = part.empty() ? endsInNewline : part.back() == '\n';
    }
    return endsInNewline ? length - 1 : length;
}

/// Appends the first `room` bytes of the text, without splitting a UTF-8 character.
void appendText(
    std::string& line, std::initializer_list<std::string_view> parts, std::size_t room) {
    for (const std::string_view part : parts) {
        const std::string_view fitting = cutText(part, room);
        appendEscaped(line, fitting);
        if (fitting.size() < part.size()) {
            return;
        }
        room -= fitting.size();
    }
}

}  // namespace

std::string logLine(const LogStamp& stamp, std::initializer_list<std::string_view> parts) {
    std::string line;
    appendStamp(line, stamp);
    const std::size_t length = textLength(parts);
    appendText(line, parts, length < maxLogText ? length : maxLogText);
    if (length > maxLogText) {
        line += "... [cut, " + std::to_string(length) + " bytes in all]";
    }
    line += '\n';
    return line;
}

std::string logDay(std::time_t time) {
    std::tm local{};
    localTime(time, &local);
    return formatTime(local, "%Y%m%d");
}

}  // namespace arkeon
