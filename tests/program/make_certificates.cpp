// Writes server certificates that no client should trust, each as KIND.pem and KIND.key:
//
//     akhostmgmt_make_certificates AUTHORITY-FOLDER TARGET-FOLDER NAME...
//
// The authority's folder has ca.pem and ca.key; all certificates but those whose kind says
// otherwise are of that authority and for all names.

#include "devserver/CertificateAuthority.h"

#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <vector>

namespace {

using devserver::CertificateAuthority;
using devserver::Identity;
using devserver::validForDays;

std::string contentOf(const std::filesystem::path& path) {
    std::ifstream file(path);
    file.exceptions(std::ios::badbit | std::ios::failbit);
    return {std::istreambuf_iterator<char>(file), {}};
}

void write(const std::filesystem::path& path, const std::string& text) {
    std::ofstream file(path);
    file.exceptions(std::ios::badbit | std::ios::failbit);
    file << text;
}

void write(const std::filesystem::path& folder, const std::string& kind, const Identity& identity) {
    write(folder / (kind + ".pem"), identity.certificatePem);
    write(folder / (kind + ".key"), identity.privateKeyPem);
}

void makeAll(
    const std::filesystem::path& authorityFolder, const std::filesystem::path& target,
    const std::vector<std::string>& names) {
    const std::string authorityPem = contentOf(authorityFolder / "ca.pem");
    const auto ours =
        CertificateAuthority::load(authorityPem, contentOf(authorityFolder / "ca.key"));
    const auto sameName = CertificateAuthority::create("akdevserver authority");
    const auto self = CertificateAuthority::create(names.front());
    const std::time_t tomorrow = std::time(nullptr) + 86400;
    write(target, "expired", ours.issueServer(names, validForDays(-1)));
    write(target, "of tomorrow", ours.issueServer(names, {tomorrow, tomorrow + 86400}));
    write(target, "of another name", ours.issueServer({"other.example"}, validForDays(1)));
    write(target, "of another authority", sameName.issueServer(names, validForDays(1)));
    write(target, "of a client", ours.issueHost(names.front(), validForDays(1)));
    write(target, "self-signed", {self.certificatePem(), self.privateKeyPem()});
}

}  // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> words(argv + 1, argv + argc);
    if (words.size() < 3) {
        std::cerr << "usage: akhostmgmt_make_certificates AUTHORITY-FOLDER TARGET-FOLDER NAME...\n";
        return 2;
    }
    try {
        makeAll(words[0], words[1], {words.begin() + 2, words.end()});
    } catch (const std::exception& failure) {
        std::cerr << "akhostmgmt_make_certificates: " << failure.what() << "\n";
        return 1;
    }
    return 0;
}
