#pragma once

/// The status codes that the platform services report, and those of the system's catalogue that the
/// tool itself returns. Each has a message in the catalogue (`getECmsgl`).
namespace arkeon::status {

/// A status code. A server's error code is one too, so a value without a name is valid. Converts to
/// `int` by itself, where an interface wants one.
enum [[nodiscard]] Status : int{
    success = 0,
    generalFailure = 20,          ///< a failure without a code of its own
    noPrimaryServer = 37,         ///< no primary server is known
    fileNotFound = 104,           ///< a named file does not exist
    unusableLogin = 117,          ///< the login file cannot be trusted or read
    loginExpired = 118,           ///< the login has expired
    wrongCommandLine = 144,       ///< the command line is wrong
    notLoggedIn = 5930,           ///< no login for this server and port
    unreadableReply = 7610,       ///< the server's reply is not what the request asked for
    unresolvedServer = 7620,      ///< the server's name could not be resolved
    noConnection = 7621,          ///< refused or unreachable
    timedOut = 7622,              ///< connecting took too long, or the transfer stalled
    untrustedServer = 7623,       ///< certificate untrusted, expired or for another name
    handshakeFailed = 7624,       ///< TLS failed otherwise, or the server rejected our certificate
    connectionBroke = 7625,       ///< the connection broke before the reply was complete
    invalidServerName = 7626,     ///< the server name is not valid
    invalidRequestTarget = 7627,  ///< a URI or header line that must not be sent
    replyTooLarge = 7628,         ///< the body, the header section or a line of it is too large
    clientFailure = 7629,         ///< any other failure of the client
    noCertificateEntry = 7640,    ///< no certificate information for this server
    malformedCertificateInfo = 7641,  ///< certificate information is unreadable
    unusableCertificate = 7642,       ///< a certificate, key or CA file cannot be used
    openPrivateKey = 7643,            ///< the private key's permissions are too open
    hostIdBufferTooSmall = 7644,      ///< the buffer for the host ID is too small
    unreadableMasterConfig = 7650,    ///< the master configuration cannot be read
    outputFailed = 7651,              ///< standard output could not be written
    emptyUri = 8614,                  ///< a request without a URI
    unknownName = 8701,               ///< the server knows no such host or mapping
    nameTaken = 8702,                 ///< the name is approved for another host
    hostExists = 8703,                ///< the server has a host of this name
    malformedBody = 8705,             ///< the server did not understand the request's body
    invalidText = 8706,               ///< a name, comment or reason that the server does not accept
    bodyTooLarge = 8707,              ///< the request is too large for the server
    wrongMethod = 8708,               ///< the resource does not have this operation
    wrongMediaType = 8709,            ///< the server does not have this version of the interface
    unknownResource = 8710,           ///< the server has no such resource
    malformedRequest = 8711,          ///< the server cannot read the request target
    otherHost = 8712,                 ///< the host certificate is that of another host
    serverFailure = 8713,             ///< the server could not use its host database
    ambiguousHost = 8900,             ///< a name that belongs to more than one host
    unknownMapping = 8901,            ///< the host has no such mapping
    noMappings = 8902,                ///< the host has no mappings to show
};

}  // namespace arkeon::status

namespace arkeon {

using status::Status;

}  // namespace arkeon
