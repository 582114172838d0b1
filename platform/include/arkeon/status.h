#pragma once

/// The status codes that the platform services report, and those of the system's catalogue that the
/// tool itself gives. Each has a text in the catalogue (`getECmsgl`).
namespace arkeon::status {

inline constexpr int success = 0;
inline constexpr int generalFailure = 20;      ///< a failure without a code of its own
inline constexpr int noPrimaryServer = 37;     ///< no primary server is known
inline constexpr int fileNotFound = 104;       ///< a named file does not exist
inline constexpr int loginRefused = 117;       ///< the login file cannot be trusted or read
inline constexpr int loginExpired = 118;       ///< the login has expired
inline constexpr int wrongCommandLine = 144;   ///< the command line is wrong
inline constexpr int notLoggedIn = 5930;       ///< no login for this server and port
inline constexpr int unreadableReply = 7610;   ///< the server's reply makes no sense
inline constexpr int unresolvedServer = 7620;  ///< the server's name could not be resolved
inline constexpr int noConnection = 7621;      ///< refused or unreachable
inline constexpr int timedOut = 7622;  ///< connecting took too long, or the transfer stalled
inline constexpr int untrustedServer =
    7623;  ///< certificate untrusted, expired or for another name
inline constexpr int handshakeFailed = 7624;  ///< TLS failed otherwise, or refused our certificate
inline constexpr int connectionBroke = 7625;  ///< the connection broke before the reply was whole
inline constexpr int invalidServerName = 7626;      ///< the server name is none
inline constexpr int invalidRequestAddress = 7627;  ///< a URI or header line that must not be sent
inline constexpr int replyTooLarge =
    7628;  ///< the body, the head or a line of it is over its limit
inline constexpr int clientFailure = 7629;     ///< any other failure of the client
inline constexpr int noCertificateRow = 7640;  ///< no certificate information for this server
inline constexpr int malformedCertificateInfo = 7641;  ///< certificate information is unreadable
inline constexpr int unusableCertificate = 7642;   ///< a certificate, key or CA file cannot be used
inline constexpr int openPrivateKey = 7643;        ///< the private key's permissions are too open
inline constexpr int hostIdBufferTooSmall = 7644;  ///< the buffer for the host ID is too small
inline constexpr int unreadableMasterConfig = 7650;  ///< the master configuration cannot be read
inline constexpr int outputFailed = 7651;            ///< standard output could not be written
inline constexpr int emptyUri = 8614;                ///< a request without a URI
inline constexpr int unknownName = 8701;             ///< the server knows no such host or mapping
inline constexpr int ambiguousHost = 8900;           ///< a name that belongs to more than one host
inline constexpr int unknownMapping = 8901;          ///< the host has no such mapping
inline constexpr int noMappings = 8902;              ///< the host has no mappings to show

}  // namespace arkeon::status
