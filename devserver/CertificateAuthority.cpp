#include "devserver/CertificateAuthority.h"

#include "devserver/Failure.h"
#include "devserver/OpenSsl.h"

#include <openssl/pem.h>

#include <arpa/inet.h>

#include <array>
#include <utility>

namespace devserver {

namespace {

std::string textOf(BIO* memory) {
    char* data = nullptr;
    const long size = BIO_get_mem_data(memory, &data);
    return {data, static_cast<std::size_t>(size)};
}

std::string toPem(X509* certificate) {
    const Owned<BIO> memory(BIO_new(BIO_s_mem()));
    requireDone(
        memory && PEM_write_bio_X509(memory.get(), certificate) == 1, "write a certificate");
    return textOf(memory.get());
}

std::string toPem(EVP_PKEY* key) {
    const Owned<BIO> memory(BIO_new(BIO_s_mem()));
    requireDone(
        memory &&
            PEM_write_bio_PrivateKey(memory.get(), key, nullptr, nullptr, 0, nullptr, nullptr) == 1,
        "write a private key");
    return textOf(memory.get());
}

Owned<EVP_PKEY> newKey() {
    // What EVP_EC_gen stands for, without its cast.
    Owned<EVP_PKEY> key(EVP_PKEY_Q_keygen(nullptr, nullptr, "EC", "P-256"));
    requireDone(key != nullptr, "make a key");
    return key;
}

void setSerialNumber(X509* certificate) {
    const Owned<BIGNUM> number(BN_new());
    // RFC 5280, 4.1.2.2: positive and at most 20 bytes.
    requireDone(
        number && BN_rand(number.get(), 159, BN_RAND_TOP_ONE, BN_RAND_BOTTOM_ANY) == 1 &&
            BN_to_ASN1_INTEGER(number.get(), X509_get_serialNumber(certificate)) != nullptr,
        "make a serial number");
}

void setValidity(X509* certificate, Validity validity) {
    requireDone(
        ASN1_TIME_set(X509_getm_notBefore(certificate), validity.notBefore) != nullptr &&
            ASN1_TIME_set(X509_getm_notAfter(certificate), validity.notAfter) != nullptr,
        "set the validity of a certificate");
}

void setCommonName(X509_NAME* name, const std::string& value) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(value.data());
    requireDone(
        X509_NAME_add_entry_by_NID(
            name, NID_commonName, MBSTRING_UTF8, bytes, static_cast<int>(value.size()), -1, 0) == 1,
        "set the common name of a certificate");
}

/// Adds an extension in OpenSSL's configuration syntax; only for fixed values.
void addExtension(X509* certificate, X509* issuer, int nid, const char* value) {
    X509V3_CTX context{};
    X509V3_set_ctx(&context, issuer, certificate, nullptr, nullptr, 0);
    const Owned<X509_EXTENSION> extension(X509V3_EXT_conf_nid(nullptr, &context, nid, value));
    requireDone(
        extension && X509_add_ext(certificate, extension.get(), -1) == 1,
        "add an extension to a certificate");
}

std::string withoutBrackets(const std::string& name) {
    if (name.size() > 2 && name.front() == '[' && name.back() == ']') {
        return name.substr(1, name.size() - 2);
    }
    return name;
}

/// The address in network order, empty when the text is none.
std::string addressBytes(const std::string& text) {
    std::array<char, sizeof(in6_addr)> bytes{};
    if (inet_pton(AF_INET, text.c_str(), bytes.data()) == 1) {
        return {bytes.data(), sizeof(in_addr)};
    }
    if (inet_pton(AF_INET6, text.c_str(), bytes.data()) == 1) {
        return {bytes.data(), sizeof(in6_addr)};
    }
    return {};
}

Owned<GENERAL_NAME> alternativeName(const std::string& text) {
    const std::string address = addressBytes(text);
    const bool isAddress = !address.empty();
    const std::string& value = isAddress ? address : text;
    Owned<GENERAL_NAME> name(GENERAL_NAME_new());
    ASN1_STRING* content = ASN1_STRING_type_new(isAddress ? V_ASN1_OCTET_STRING : V_ASN1_IA5STRING);
    requireDone(
        name && content != nullptr &&
            ASN1_STRING_set(content, value.data(), static_cast<int>(value.size())) == 1,
        "make an alternative name");
    GENERAL_NAME_set0_value(name.get(), isAddress ? GEN_IPADD : GEN_DNS, content);
    return name;
}

void addAlternativeNames(X509* certificate, const std::vector<std::string>& namesAndAddresses) {
    const Owned<GENERAL_NAMES> names(GENERAL_NAMES_new());
    requireDone(names != nullptr, "make alternative names");
    for (const std::string& text : namesAndAddresses) {
        Owned<GENERAL_NAME> name = alternativeName(withoutBrackets(text));
        requireDone(sk_GENERAL_NAME_push(names.get(), name.get()) > 0, "make alternative names");
        static_cast<void>(name.release());
    }
    requireDone(
        X509_add1_ext_i2d(certificate, NID_subject_alt_name, names.get(), 0, X509V3_ADD_DEFAULT) ==
            1,
        "add alternative names to a certificate");
}

/// A certificate with everything but its extensions and its signature.
Owned<X509>
newCertificate(EVP_PKEY* key, const std::string& commonName, const X509* issuer, Validity when) {
    Owned<X509> certificate(X509_new());
    requireDone(
        certificate && X509_set_version(certificate.get(), X509_VERSION_3) == 1 &&
            X509_set_pubkey(certificate.get(), key) == 1,
        "make a certificate");
    setSerialNumber(certificate.get());
    setValidity(certificate.get(), when);
    X509_NAME* subject = X509_get_subject_name(certificate.get());
    if (!commonName.empty()) {
        setCommonName(subject, commonName);
    }
    const X509_NAME* by = issuer == nullptr ? subject : X509_get_subject_name(issuer);
    requireDone(
        X509_set_issuer_name(certificate.get(), by) == 1, "set the issuer of a certificate");
    return certificate;
}

void sign(X509* certificate, EVP_PKEY* key) {
    requireDone(X509_sign(certificate, key, EVP_sha256()) > 0, "sign a certificate");
}

}  // namespace

/// The authority itself: its certificate and its key.
struct CertificateAuthority::Parts {
    Owned<X509> certificate;
    Owned<EVP_PKEY> key;

    /// `purpose` is the extended key usage; alternative names only where there are any.
    Identity issue(
        const std::string& commonName, const char* purpose,
        const std::vector<std::string>& alternativeNames, Validity validity) const {
        const Owned<EVP_PKEY> subjectKey = newKey();
        const Owned<X509> leaf =
            newCertificate(subjectKey.get(), commonName, certificate.get(), validity);
        addExtension(leaf.get(), certificate.get(), NID_basic_constraints, "critical,CA:FALSE");
        addExtension(leaf.get(), certificate.get(), NID_key_usage, "critical,digitalSignature");
        addExtension(leaf.get(), certificate.get(), NID_ext_key_usage, purpose);
        addExtension(leaf.get(), certificate.get(), NID_subject_key_identifier, "hash");
        addExtension(leaf.get(), certificate.get(), NID_authority_key_identifier, "keyid:always");
        if (!alternativeNames.empty()) {
            addAlternativeNames(leaf.get(), alternativeNames);
        }
        sign(leaf.get(), key.get());
        return {toPem(leaf.get()), toPem(subjectKey.get())};
    }
};

Validity validForDays(int days) {
    constexpr std::time_t day = std::time_t{24} * 60 * 60;
    const std::time_t now = std::time(nullptr);
    const std::time_t end = now + days * day;
    return {days < 0 ? end - day : now - 300, end};
}

CertificateAuthority::CertificateAuthority(std::unique_ptr<Parts> parts)
    : parts_(std::move(parts)) {}
CertificateAuthority::CertificateAuthority(CertificateAuthority&&) noexcept = default;
CertificateAuthority& CertificateAuthority::operator=(CertificateAuthority&&) noexcept = default;
CertificateAuthority::~CertificateAuthority() = default;

CertificateAuthority CertificateAuthority::create(const std::string& commonName) {
    auto parts = std::make_unique<Parts>();
    parts->key = newKey();
    parts->certificate = newCertificate(parts->key.get(), commonName, nullptr, validForDays(3653));
    X509* root = parts->certificate.get();
    addExtension(root, root, NID_basic_constraints, "critical,CA:TRUE,pathlen:0");
    addExtension(root, root, NID_key_usage, "critical,keyCertSign,cRLSign");
    addExtension(root, root, NID_subject_key_identifier, "hash");
    sign(root, parts->key.get());
    return CertificateAuthority(std::move(parts));
}

CertificateAuthority
CertificateAuthority::load(const std::string& certificatePem, const std::string& privateKeyPem) {
    auto parts = std::make_unique<Parts>();
    parts->certificate = certificateFrom(certificatePem);
    parts->key = keyFrom(privateKeyPem);
    requireDone(
        X509_check_private_key(parts->certificate.get(), parts->key.get()) == 1,
        "use the authority's private key with its certificate");
    return CertificateAuthority(std::move(parts));
}

std::string CertificateAuthority::certificatePem() const {
    return toPem(parts_->certificate.get());
}

std::string CertificateAuthority::privateKeyPem() const {
    return toPem(parts_->key.get());
}

Identity CertificateAuthority::issueServer(
    const std::vector<std::string>& namesAndAddresses, Validity validity) const {
    if (namesAndAddresses.empty()) {
        throw Failure("a server certificate needs a name or an address");
    }
    // X.520: a common name has at most 64 characters; the alternative names are what counts.
    const std::string first = withoutBrackets(namesAndAddresses.front());
    const std::string commonName = first.size() <= 64 ? first : "Arkeon development server";
    return parts_->issue(commonName, "serverAuth", namesAndAddresses, validity);
}

Identity CertificateAuthority::issueHost(const std::string& hostId, Validity validity) const {
    return parts_->issue(hostId, "clientAuth", {}, validity);
}

}  // namespace devserver
