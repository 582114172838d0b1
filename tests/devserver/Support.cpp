#include "devserver/Support.h"

#include <curl/curl.h>
#include <jansson.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cctype>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <random>
#include <sstream>
#include <stdexcept>
#include <thread>

namespace devserver::testing {

namespace {

namespace fs = std::filesystem;

/// libcurl's global set-up must come before the first thread uses it.
const bool curlIsReady = curl_global_init(CURL_GLOBAL_DEFAULT) == CURLE_OK;

struct Collector {
    Received* received;
    std::size_t limit;
};

std::size_t takeBody(char* data, std::size_t size, std::size_t count, void* pointer) {
    const auto* collector = static_cast<Collector*>(pointer);
    collector->received->body.append(data, size * count);
    return collector->received->body.size() > collector->limit ? 0 : size * count;
}

std::size_t takeHeader(char* data, std::size_t size, std::size_t count, void* pointer) {
    const std::string line(data, size * count);
    const std::size_t colon = line.find(':');
    if (colon != std::string::npos) {
        std::string name = line.substr(0, colon);
        for (char& letter : name) {
            letter = static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
        }
        const std::size_t end = line.find_last_not_of("\r\n");
        const std::size_t start = line.find_first_not_of(' ', colon + 1);
        static_cast<Received*>(pointer)->headers[name] = line.substr(start, end - start + 1);
    }
    return size * count;
}

/// The header lines to send: the given ones over the usual ones.
curl_slist* headerLines(const Headers& given, const std::string& token) {
    Headers all{
        {"Accept", fullType},
        {"Content-Type", fullType},
        {"Authorization", token.empty() ? "" : "Bearer " + token},
        {"Expect", ""}};
    for (const auto& [name, value] : given) {
        all[name] = value;
    }
    curl_slist* lines = nullptr;
    for (const auto& [name, value] : all) {
        std::string line = name;
        line += value.empty() ? ":" : ": ";
        line += value;
        lines = curl_slist_append(lines, line.c_str());
    }
    return lines;
}

/// The server's own certificate of the last handshake, as libcurl keeps it.
std::string certificateOf(CURL* handle) {
    curl_certinfo* chain = nullptr;
    curl_easy_getinfo(handle, CURLINFO_CERTINFO, &chain);
    if (chain == nullptr || chain->num_of_certs == 0) {
        return {};
    }
    const std::string_view field = "Cert:";
    for (const curl_slist* line = chain->certinfo[0]; line != nullptr; line = line->next) {
        const std::string_view text = line->data;
        if (text.starts_with(field)) {
            return std::string(text.substr(field.size()));
        }
    }
    return {};
}

Options optionsOf(const fs::path& root, std::optional<std::size_t> count) {
    Options options;
    options.root = root.string();
    options.listen = ownAddress();
    options.hosts = count;
    return options;
}

std::vector<FaultRule> rulesOf(const std::vector<std::string>& texts) {
    std::vector<FaultRule> rules;
    rules.reserve(texts.size());
    for (const std::string& text : texts) {
        rules.push_back(parseFaultRule(text));
    }
    return rules;
}

int emptyFile(const fs::path& file) {
    return ::open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
}

}  // namespace

TemporaryFolder::TemporaryFolder() {
    std::string name = (fs::temp_directory_path() / "akdevserver-test-XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr) {
        throw std::runtime_error("no temporary folder");
    }
    path_ = name;
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
}

std::string ownAddress() {
    std::random_device random;
    std::uniform_int_distribution<int> part(2, 253);
    return "127." + std::to_string(part(random)) + '.' + std::to_string(part(random)) + '.' +
           std::to_string(part(random));
}

std::string tokenOf(const fs::path& root) {
    const std::string text = contentOf(root / "config" / "arkeon" / "logins.json");
    json_t* json = json_loadb(text.data(), text.size(), 0, nullptr);
    const char* token = json_string_value(
        json_object_get(json_array_get(json_object_get(json, "logins"), 0), "token"));
    std::string result = token == nullptr ? "" : token;
    json_decref(json);
    return result;
}

long long Received::errorCode() const {
    json_t* json = json_loadb(body.data(), body.size(), 0, nullptr);
    const json_t* code = json_object_get(json, "errorCode");
    const bool complete = json_is_string(json_object_get(json, "errorMessage"));
    const long long result = json_is_integer(code) && complete ? json_integer_value(code) : -1;
    json_decref(json);
    return result;
}

Client::Client(const fs::path& root, const std::string& address, int port)
    : handle_(curl_easy_init()), base_("https://" + address + ':' + std::to_string(port)),
      authority_((root / "certs" / "ca.pem").string()), token_(tokenOf(root)),
      certificate_((root / "certs" / "host.pem").string()),
      key_((root / "certs" / "host.key").string()) {}

Client::~Client() {
    curl_easy_cleanup(handle_);
}

void Client::present(const std::string& certificateFile, const std::string& keyFile) {
    certificate_ = certificateFile;
    key_ = keyFile;
}

Received Client::send(
    const std::string& method, const std::string& target, const char* body,
    const Headers& headers) {
    Received received;
    Collector collector{&received, sizeLimit_};
    curl_easy_reset(handle_);
    curl_slist* lines = headerLines(headers, token_);
    curl_easy_setopt(handle_, CURLOPT_URL, base_.c_str());
    curl_easy_setopt(handle_, CURLOPT_REQUEST_TARGET, target.c_str());
    curl_easy_setopt(handle_, CURLOPT_CUSTOMREQUEST, method.c_str());
    curl_easy_setopt(handle_, CURLOPT_HTTPHEADER, lines);
    curl_easy_setopt(handle_, CURLOPT_PROXY, "");
    curl_easy_setopt(handle_, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(handle_, CURLOPT_NOBODY, method == "HEAD" ? 1L : 0L);
    curl_easy_setopt(handle_, CURLOPT_CAINFO, authority_.c_str());
    curl_easy_setopt(handle_, CURLOPT_CAPATH, nullptr);
    curl_easy_setopt(handle_, CURLOPT_CERTINFO, 1L);
    if (!certificate_.empty()) {
        curl_easy_setopt(handle_, CURLOPT_SSLCERT, certificate_.c_str());
        curl_easy_setopt(handle_, CURLOPT_SSLKEY, key_.c_str());
    }
    if (body != nullptr) {
        curl_easy_setopt(handle_, CURLOPT_POSTFIELDS, body);
    }
    if (compressed_) {
        curl_easy_setopt(handle_, CURLOPT_ACCEPT_ENCODING, "gzip");
    }
    curl_easy_setopt(handle_, CURLOPT_TIMEOUT_MS, timeLimit_);
    curl_easy_setopt(handle_, CURLOPT_WRITEFUNCTION, takeBody);
    curl_easy_setopt(handle_, CURLOPT_WRITEDATA, &collector);
    curl_easy_setopt(handle_, CURLOPT_HEADERFUNCTION, takeHeader);
    curl_easy_setopt(handle_, CURLOPT_HEADERDATA, &received);
    received.curl = curl_easy_perform(handle_);
    curl_easy_getinfo(handle_, CURLINFO_RESPONSE_CODE, &received.status);
    curl_easy_getinfo(handle_, CURLINFO_TOTAL_TIME, &received.seconds);
    received.certificate = certificateOf(handle_);
    curl_slist_free_all(lines);
    return received;
}

LocalServer::LocalServer(
    const std::vector<std::string>& faultRules, std::optional<std::size_t> count)
    : options_(optionsOf(folder_.path() / "root", count)), root_(std::make_unique<Root>(options_)),
      resources_(std::make_unique<Resources>(root_->database(), root_->primaryName())),
      faults_(std::make_unique<Faults>(rulesOf(faultRules))),
      server_(std::make_unique<Server>(
          root_->authority(),
          Endpoint{options_.listen, options_.port, root_->serverIdentity(), root_->names()},
          *resources_, *faults_)) {
    server_->start();
}

std::vector<AuditEntry> LocalServer::audit() const {
    return HostDatabase::auditTrail(Root::databasePath(root_->path()).string());
}

Program::Program(const fs::path& folder, const std::vector<std::string>& arguments)
    : folder_(folder) {
    std::vector<std::string> words{AKDEVSERVER_PROGRAM};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> pointers;
    pointers.reserve(words.size() + 1);
    for (std::string& word : words) {
        pointers.push_back(word.data());
    }
    pointers.push_back(nullptr);
    // Emptied here, not by the child: nobody may take what an earlier run said for this one's.
    const int output = emptyFile(folder_ / "stdout");
    const int errors = emptyFile(folder_ / "stderr");
    process_ = ::fork();
    if (process_ == 0) {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        ::dup2(output, STDOUT_FILENO);
        ::dup2(errors, STDERR_FILENO);
        ::execv(pointers.front(), pointers.data());
        ::_exit(127);
    }
    ::close(output);
    ::close(errors);
}

Program::~Program() {
    if (!hasEnded()) {
        ::kill(process_, SIGKILL);
        ::waitpid(process_, nullptr, 0);
    }
}

bool Program::hasEnded() {
    int raw = 0;
    if (status_ == -1 && ::waitpid(process_, &raw, WNOHANG) == process_) {
        status_ = WIFEXITED(raw) ? WEXITSTATUS(raw) : 1000 + WTERMSIG(raw);
    }
    return status_ != -1;
}

bool Program::waitFor(const fs::path& file) {
    for (int waited = 0; waited < 20'000 && !hasEnded(); waited += 5) {
        if (fs::exists(file)) {
            return true;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return false;
}

void Program::signal(int number) const {
    ::kill(process_, number);
}

int Program::wait(int milliseconds) {
    for (int waited = 0; !hasEnded() && waited < milliseconds; waited += 5) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return status_;
}

std::string Program::output() const {
    return contentOf(folder_ / "stdout");
}

std::string Program::errors() const {
    return contentOf(folder_ / "stderr");
}

Outcome runProgram(const std::vector<std::string>& arguments) {
    const TemporaryFolder folder;
    Program program(folder.path(), arguments);
    const int status = program.wait();
    return {status, program.output(), program.errors()};
}

std::string contentOf(const fs::path& file) {
    std::ostringstream content;
    content << std::ifstream(file, std::ios::binary).rdbuf();
    return content.str();
}

std::size_t occurrences(const std::string& text, const std::string& part) {
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
        ++count;
    }
    return count;
}

}  // namespace devserver::testing
