// The bytes of the certificate information.

#include "arkeon/host_identity.h"
#include "arkeon/status.h"
#include "config/CertificateInfo.h"
#include "fuzz/Input.h"
#include "fuzz/Property.h"
#include "fuzz/Root.h"

#include <array>

using fuzz::expect;

namespace {

void expectRow(const arkeon::CertificateEntry& row) {
    for (const std::string& text : {row.hostId, row.certificate, row.privateKey, row.caBundle}) {
        expect(!text.empty() && text.find('\0') == std::string::npos, "every text is a C string");
    }
    for (const std::string& path : {row.certificate, row.privateKey, row.caBundle}) {
        expect(path.starts_with('/'), "every path is absolute");
    }
}

void expectHostId(int type, int result, const std::string& hostId) {
    std::array<char, 8> buffer{};
    buffer.fill('x');
    const bool tooLong = result == 0 && hostId.size() >= buffer.size();
    const int wanted = tooLong ? arkeon::status::hostIdBufferTooSmall : result;
    expect(getHostID(type, "p", buffer.data(), buffer.size()) == wanted, "the same row is found");
    expect(buffer.data() == (wanted == 0 ? hostId : ""), "the whole host ID is copied, or none");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::root().write("etc/certificates.toml", fuzz::Input(data, size).rest());
    for (const int type : {1, 2}) {
        arkeon::CertificateEntry row;
        const int result = arkeon::findCertificateEntry(type, "p", row);
        expect(
            result == 0 || result == arkeon::status::noCertificateEntry ||
                result == arkeon::status::malformedCertificateInfo,
            "the row is found, missing or malformed");
        if (result == 0) {
            expectRow(row);
        }
        expectHostId(type, result, row.hostId);
    }
    return 0;
}
