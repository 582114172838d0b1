"""Environment variables that other programs heed: none changes the request, whom the tool trusts,
where it connects or what it writes."""

ELSEWHERE = "http://127.0.0.1:9"  # where nobody listens
HOME = "{folder}/home"
STRANGERS = "{folder}/root/certs/stranger_ca.pem"
CONFIGURATION = (
    "openssl_conf = all\n[all]\nproviders = p\nssl_conf = ssl\nengines = e\n"
    "[p]\nlegacy = l\n[l]\nactivate = 1\n[e]\nx = y\n[y]\ndynamic_path = {folder}/home/engine.so\n"
    "[ssl]\nsystem_default = any\n[any]\nMinProtocol = TLSv1.3\nMaxProtocol = TLSv1.1\n"
)
NETRC = "default login admin password elsewhere\n"

VARIABLES = {
    "SSL_CERT_FILE": STRANGERS,
    "SSL_CERT_DIR": "{folder}/root/certs",
    "SSLKEYLOGFILE": HOME + "/keys",
    "OPENSSL_CONF": HOME + "/openssl.cnf",
    "OPENSSL_CONF_INCLUDE": HOME,
    "OPENSSL_MODULES": HOME,
    "OPENSSL_ENGINES": HOME,
    "OPENSSL_TRACE": "TLS",
    "RANDFILE": HOME + "/random",
    "CTLOG_FILE": HOME + "/ctlog",
    "CURL_CA_BUNDLE": STRANGERS,
    "CURL_HOME": HOME,
    "CURL_SSL_BACKEND": "gnutls",
    "CURL_DEBUG": "1",
    "CURL_TRACE": "all",
    "CURL_ENTROPY": "1",
    "CURL_HTTP_VERSION": "2",
    "QLOGDIR": HOME,
    "NETRC": HOME + "/.netrc",
    "HOME": HOME,
    "http_proxy": ELSEWHERE,
    "HTTP_PROXY": ELSEWHERE,
    "https_proxy": ELSEWHERE,
    "HTTPS_PROXY": ELSEWHERE,
    "all_proxy": "socks5h://127.0.0.1:9",
    "ALL_PROXY": ELSEWHERE,
    "ftp_proxy": ELSEWHERE,
    "no_proxy": "",
    "REQUEST_METHOD": "GET",
    "TMPDIR": HOME,
    "MALLOC_TRACE": HOME + "/allocations",
}
FILES = [
    {"path": "home/openssl.cnf", "text": CONFIGURATION},
    {"path": "home/.curlrc", "text": f"insecure\nproxy = {ELSEWHERE}\n"},
    {"path": "home/.netrc", "text": NETRC, "mode": 0o600},
]
LISTED = {
    "args": ["-list", "-json_compact"],
    "requests": [{"target": "/arkeon/config/hosts/hostmappings"}],
    "replies": [{"json": '{"hosts":[{}]}'}],
    "stdout": '{"hosts":[{}]}\n',
}
# The server's own certificate is not of the authority that the host trusts.
STRANGE = {
    "args": ["-list"],
    "connections": 1,
    "stderr": "Exit Status 7623: {status:7623}\n",
    "status": 199,
}
STRANGERS_TRUSTED = """
[[certificate]]
type = "host"
server = "{server}"
host_id = "{host_id}"
certificate = "../certs/host.pem"
private_key = "../certs/host.key"
ca = "../certs/other_ca.pem"
"""
OTHER_AUTHORITY = [
    {"path": "root/certs/other_ca.pem", "symlink": "stranger_ca.pem"},
    {"path": "root/etc/certificates.toml", "text": STRANGERS_TRUSTED},
]


def trusted(name, variables):
    return LISTED | {"name": f"{name}: a request", "environment": variables, "files": FILES}


def untrusted(name, variables):
    """The server's authority is in every place that a variable may name."""
    named = {key: value.replace("stranger_ca", "ca") for key, value in variables.items()}
    files = FILES + OTHER_AUTHORITY
    return STRANGE | {"name": f"{name}: a stranger", "environment": named, "files": files}


def all_cases():
    chosen = {name: {name: value} for name, value in VARIABLES.items()}
    chosen["all at once"] = VARIABLES
    for name, variables in chosen.items():
        yield trusted(name, variables)
        yield untrusted(name, variables)


CASES = {"case": list(all_cases())}
