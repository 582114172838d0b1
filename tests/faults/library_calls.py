"""Which library functions the tool calls, and why some need not be made to fail."""

import pathlib
import re
import subprocess

CANNOT_FAIL = {
    "computes from its arguments alone": """
        memchr memcmp memcpy memmove memset __memcpy_chk __memmove_chk __memset_chk strcasecmp_l
        strcasestr strcmp strlen strncmp strnlen strrchr strchr strtoul __isoc23_strtoul inet_pton
        json_array_get json_array_size json_integer_value json_object_get json_string_length
        json_string_value __errno_location timegm SSL_get_SSL_CTX curl_easy_strerror dlerror""",
    "releases or resets": """
        free json_delete curl_easy_cleanup curl_easy_reset curl_url_cleanup curl_slist_free_all
        SSL_CTX_set_info_callback""",
    "returns a constant": "json_true json_false",
    "reads the process's own data; nothing found is an ordinary result": """
        getenv secure_getenv geteuid getpid""",
    "fails for a wrong argument only, and this one is right": """
        clock_gettime time signal unsetenv tzset SSL_CTX_get_ex_data""",
    "fails only for a year that does not fit: shown as an empty date": "gmtime_r localtime_r",
    "returns 0 only for a buffer too small, and it is large enough": "strftime",
    "fails for a text that is not JSON; out of memory is jansson's own matter": "json_loadb",
    "finds the one function that the module of the same build exports": "dlsym",
    "returns the C locale, which always exists": "newlocale",
    "the compiler's and the C library's own": """
        _ITM_deregisterTMCloneTable _ITM_registerTMCloneTable __gmon_start__ __libc_start_main
        __stack_chk_fail""",
}
NAMED = {name for names in CANNOT_FAIL.values() for name in names.split()}
# A C++ function fails by an exception, of which std::bad_alloc from `operator new` is injected.
CPLUSPLUS = re.compile(r"_Z(?!n|N6ACE_OS6malloc)|__cxa_|__gxx_|_Unwind_")


def symbols(path, *options):
    """The names in a file's dynamic symbol table, without their versions."""
    command = ["nm", "-D", *options, path]
    lines = subprocess.run(command, check=True, capture_output=True, text=True).stdout
    return {line.split()[-1].partition("@")[0] for line in lines.splitlines()}


def called(program):
    """The C functions and allocations that a program and its module, if any, are linked with."""
    module = pathlib.Path(program).with_name("libarkeon-https.so")
    files = [program, module] if module.exists() else [program]
    names = set().union(*(symbols(file, "--undefined-only") for file in files))
    return {name for name in names if not CPLUSPLUS.match(name)}


def unknown(program, shim):
    """The functions that the program calls and that neither fail in the shim nor are named here."""
    return called(program) - symbols(shim, "--defined-only") - NAMED
