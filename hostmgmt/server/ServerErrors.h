#pragma once

#include <optional>
#include <string>

class CLogcmd;
class JsonPayload;

/// Reads and logs the code and the message of a server's error reply.
/// @param payload receives the parsed reply
/// @return the code; nothing if the code or the message is missing or of another type, or the
///         code does not fit in 32 bits
std::optional<int>
readErrorReply(const std::string& reply, JsonPayload& payload, const CLogcmd& log);

/// Whether a status means that the user has to log in first.
bool isLoginFailure(int code);

/// Shows on standard error that a login is required.
void printLoginRequired();

/// Logs a status's message and shows "Exit Status N: message" on standard error, for 117 and 118
/// after the request to log in. Nothing happens for 0.
void reportStatus(int code, const CLogcmd& log);

/// The same with a message that is not the status's own.
void reportStatus(int code, const std::string& message, const CLogcmd& log);
