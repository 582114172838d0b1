#include "devserver/Faults.h"

#include <utility>

namespace devserver {

namespace {

constexpr const char* htmlPage = "<!DOCTYPE html>\n<html><head><title>Gateway</title></head>"
                                 "<body><h1>This is not the primary server</h1></body></html>\n";

bool fits(const FaultRule& rule, std::string_view method, std::string_view target) {
    if (rule.remaining == 0 || (rule.method != "*" && rule.method != method)) {
        return false;
    }
    const std::string_view pattern = rule.pattern;
    if (!pattern.empty() && pattern.back() == '*') {
        return target.starts_with(pattern.substr(0, pattern.size() - 1));
    }
    return pattern == target;
}

void useUp(FaultRule& rule) {
    if (rule.remaining != FaultRule::always) {
        --rule.remaining;
    }
}

std::string hostileText(Hostile kind) {
    switch (kind) {
    case Hostile::escapes:
        return "\x1b[31mred\x1b[0m\x1b]0;title\x07\x1b[2J\xc2\x9b"
               "5A";
    case Hostile::controls:
        return "a\nb\tc\rd\be\x7f"
               "f\x01g";
    case Hostile::utf8:
        return "\xff\xfe\xc3(\xed\xa0\x80\xf4\x90\x80\x80\x9b"
               "31m";
    case Hostile::format:
        return "%s%n%1$s%99999d${HOME}`id`$(id)";
    case Hostile::none:
        break;
    }
    return {};
}

}  // namespace

bool Fault::replacesReply() const {
    return status || html || !redirect.empty() || endless || drop;
}

Reply Fault::replacement() const {
    if (!redirect.empty()) {
        Reply reply;
        reply.status = status.value_or(302);
        reply.headers.emplace_back("Location", redirect);
        return reply;
    }
    if (html) {
        Reply reply;
        reply.status = status.value_or(200);
        reply.contentType = "text/html; charset=utf-8";
        reply.body = htmlPage;
        return reply;
    }
    if (errorCode) {
        return errorReply(status.value_or(500), *errorCode, "A fault that was asked for.");
    }
    Reply reply;
    reply.status = status.value_or(200);
    return reply;
}

bool Fault::changesTransmission() const {
    return endless || dripBytes > 0 || cut || lengthChange != 0;
}

Faults::Faults(std::vector<FaultRule> rules) : rules_(std::move(rules)) {}

std::optional<Fault> Faults::forRequest(std::string_view method, std::string_view target) {
    const std::lock_guard lock(mutex_);
    for (FaultRule& rule : rules_) {
        if (rule.certificate == CertificateFault::none && fits(rule, method, target)) {
            useUp(rule);
            return rule.fault;
        }
    }
    return std::nullopt;
}

CertificateFault Faults::forConnection() {
    const std::lock_guard lock(mutex_);
    for (FaultRule& rule : rules_) {
        if (rule.certificate != CertificateFault::none && rule.remaining > 0) {
            useUp(rule);
            return rule.certificate;
        }
    }
    return CertificateFault::none;
}

void makeHostile(HostRecord& host, Hostile kind) {
    if (kind == Hostile::none) {
        return;
    }
    const std::string text = hostileText(kind);
    host.values[hostKey::comment] = "comment " + text;
    host.values[hostKey::hostName] = "host " + text;
    for (MappingRecord& mapping : host.mappings) {
        mapping[mappingKey::name] = text + " name";
    }
}

}  // namespace devserver
