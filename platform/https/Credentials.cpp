#include "https/Credentials.h"

#include "arkeon/status.h"
#include "config/CertificateInfo.h"
#include "config/ReadFile.h"
#include "log/Report.h"

namespace arkeon {
namespace {

/// libcurl takes no larger option (CURL_MAX_INPUT_LENGTH).
constexpr std::size_t largestPem = 8'000'000;

/// Permissions that a private key must not have: writing for the group, anything for others.
constexpr mode_t tooOpen = 027;

int unusable(const std::string& path, std::string_view reason) {
    report({path, ": ", reason});
    return status::unusableCertificate;
}

int readPem(const std::string& path, mode_t forbidden, std::string& text) {
    FileContent file = readFile(path, largestPem);
    if (file.error != 0) {
        return unusable(path, file.reason);
    }
    if ((file.mode & forbidden) != 0) {
        report({path, ": the private key is open to others, or its group can write it"});
        return status::openPrivateKey;
    }
    text = std::move(file.text);
    return text.empty() ? unusable(path, "the file is empty") : status::success;
}

}  // namespace

int readCredentials(int certType, const std::string& server, Credentials& credentials) {
    CertificateRow row;
    int result = findCertificateRow(certType, server, row);
    if (result == status::success) {
        result = readPem(row.certificate, 0, credentials.certificate);
    }
    if (result == status::success) {
        result = readPem(row.privateKey, tooOpen, credentials.privateKey);
    }
    if (result == status::success) {
        result = readPem(row.authorities, 0, credentials.authorities);
    }
    return result;
}

}  // namespace arkeon
