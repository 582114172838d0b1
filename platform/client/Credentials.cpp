#include "client/Credentials.h"

#include "config/CertificateInfo.h"
#include "config/ReadFile.h"
#include "log/Report.h"

#include <sys/prctl.h>

namespace arkeon {
namespace {

/// libcurl accepts no larger option (CURL_MAX_INPUT_LENGTH).
constexpr std::size_t maxPemBytes = 8'000'000;

/// Permissions that a private key must not have: writing for the group, anything for others.
constexpr mode_t tooOpen = 027;

Status unusable(const std::string& path, std::string_view reason) {
    report({path, ": ", reason});
    return status::unusableCertificate;
}

Status readPem(const std::string& path, mode_t forbidden, std::string& text) {
    FileContent file = readFile(path, maxPemBytes);
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

Status readCredentials(int certType, const std::string& server, Credentials& credentials) {
    if (prctl(PR_SET_DUMPABLE, 0) != 0) {
        report({"the process's memory cannot be made private"});
    }
    CertificateEntry entry;
    Status result = findCertificateEntry(certType, server, entry);
    if (result == status::success) {
        result = readPem(entry.certificate, 0, credentials.certificate);
    }
    if (result == status::success) {
        result = readPem(entry.privateKey, tooOpen, credentials.privateKey);
    }
    if (result == status::success) {
        result = readPem(entry.caBundle, 0, credentials.caBundle);
    }
    return result;
}

}  // namespace arkeon
