"""What is mutated, in the groups of the report, and which tests it is held against."""

OPERATIONS = ["Add", "AddHost", "Comment", "Delete", "List", "ReissueCert", "UpdateHost"]

GROUPS = {
    "argument rules": [
        "cmdframework/Argscmd.cpp", "cmdframework/Parameterscmd.cpp", "cmdframework/Basecmd.cpp",
        "hostmgmt/ArgumentRules.cpp", "driver/Operations.cpp",
    ],
    "operations": [
        "hostmgmt/AkHostMgmtBaseOption.cpp", "hostmgmt/Json.cpp",
        *(f"hostmgmt/operations/AkHostMgmt{name}.cpp" for name in OPERATIONS),
    ],
    "request classification": [
        "hostmgmt/server/HostLookup.cpp", "hostmgmt/server/PrimaryServer.cpp",
        "hostmgmt/server/RestResources.cpp", "platform/client/AKClientCURL.cpp",
        "platform/client/RequestText.cpp", "platform/https/CurlStatus.cpp",
        "platform/https/ReplyFraming.cpp",
    ],
    "error reporting": [
        "cmdframework/Messages.cpp", "cmdframework/Runtimecmd.cpp", "cmdframework/Usagecmd.cpp",
        "hostmgmt/OperationOutput.cpp", "hostmgmt/server/ServerErrors.cpp",
        "driver/ExecuteAkHostMgmt.cpp", "platform/catalogue/Placeholders.cpp",
    ],
    "listing formats": [
        "hostmgmt/listing/ListLabels.cpp", "hostmgmt/listing/ListPrinter.cpp",
        "hostmgmt/listing/ListText.cpp", "hostmgmt/listing/LocalDate.cpp",
        "platform/text/ServerNames.cpp", "platform/text/Text.cpp", "platform/text/Utf8.cpp",
    ],
}  # fmt: skip

# Programs of GoogleTest, and for each tool the files of cases; all as paths below the build.
UNIT_TESTS = [
    "tests/cmdframework_tests", "tests/hostmgmt_tests", "tests/driver_tests",
    "tests/platform_text_test", "tests/platform_catalogue_test", "tests/platform_https_test",
]  # fmt: skip
MODULE = "tests/libarkeon-https.so"
CASES = {
    "tests/akhostmgmt_logging_to_folder": [
        "entry", "arguments", "queries", "long_format", "short_format", "json_formats",
        "server_errors", "platform_failures", "primary_server", "streams", "log", "translations",
        "add", "delete", "updatehost", "comments", "reissue", "addhost",
    ],
    "bin/akhostmgmt": ["installed_program"],
}  # fmt: skip
LEAST_SHARE = 95  # per cent of a group's mutants that the tests have to find


def group_of(path):
    return next(name for name, paths in GROUPS.items() if path in paths)
