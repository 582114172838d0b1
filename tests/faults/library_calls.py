"""Which library functions the tool calls, and why some need not be made to fail."""

import pathlib
import re
import subprocess

SOURCES = pathlib.Path(__file__).resolve().parent.parent.parent
FUNCTION_TABLE = SOURCES / "platform" / "https" / "ClientLibraries.cpp"

CANNOT_FAIL = {
    "computes from its arguments alone": """
        memchr memcmp memcpy memmove memset __memcpy_chk __memmove_chk __memset_chk strcasecmp
        strcasecmp_l strcasestr strcmp strlen strncmp strnlen strrchr strchr strtoul inet_pton
        json_array_get json_array_size json_integer_value json_object_get json_string_length
        json_string_value sigaddset sigemptyset strerror __errno_location SSL_get_SSL_CTX
        curl_easy_strerror dlerror""",
    "gives back or resets": """
        free json_delete json_get_alloc_funcs json_set_alloc_funcs curl_easy_cleanup
        curl_easy_reset curl_url_cleanup curl_slist_free_all SSL_CTX_set_info_callback""",
    "returns a constant": "json_true json_false",
    "reads what the process has; nothing found is an ordinary result": """
        getenv secure_getenv geteuid getpid""",
    "fails for a wrong argument alone, and this one is right": """
        clock_gettime time pthread_sigmask unsetenv tzset SSL_CTX_get_ex_data""",
    "a year that does not fit is shown as an empty date; other times do not fail": "localtime_r",
    "returns 0 only for a buffer too small, and it is large enough": "strftime",
    "fails for a text that is no JSON; without memory jansson throws": "json_loads json_loadb",
    "ends the process": "__assert_fail abort _exit",
    "one thread: nothing to wait for": """
        pthread_mutex_lock pthread_mutex_unlock pthread_once __pthread_key_create
        pthread_key_create pthread_getspecific pthread_setspecific __tls_get_addr
        __libc_single_threaded syscall""",
    "the compiler's and the C library's own": """
        _ITM_deregisterTMCloneTable _ITM_registerTMCloneTable __gmon_start__ __cxa_atexit
        __cxa_finalize __libc_start_main __stack_chk_fail _dl_find_object __isoc23_strtoul""",
    "gives the one C locale, which is always there": "newlocale",
    "of the C++ library: other locales and wide characters, which the program does not use": """
        __ctype_get_mb_cur_max __duplocale __freelocale __iswctype_l __newlocale __nl_langinfo_l
        __strcoll_l __strftime_l __strtod_l __strtof_l __strxfrm_l __towlower_l __towupper_l
        __uselocale __wcscoll_l __wcsftime_l __wcsxfrm_l __wctype_l btowc gettext iconv iconv_close
        iconv_open mbrtowc mbsnrtowcs mbsrtowcs sprintf strtold_l uselocale wcrtomb wcscmp
        wcslen wcsnrtombs wctob wmemchr wmemcpy wmemmove wmemset""",
    "of the C++ library: what it prints when the process is aborted": "fputc fputs fwrite stderr",
}
NAMED = {name for names in CANNOT_FAIL.values() for name in names.split()}


def symbols(path, *options):
    """The names in a file's dynamic symbol table, without their versions."""
    command = ["nm", "-D", *options, path]
    lines = subprocess.run(command, check=True, capture_output=True, text=True).stdout
    return {line.split()[-1].partition("@")[0] for line in lines.splitlines()}


def called(tool):
    """Every function that the tool is linked with or looks up when it makes a request."""
    looked_up = re.findall(r"AKHOSTMGMT_FIND\(\w+, (\w+)\)", FUNCTION_TABLE.read_text())
    return symbols(tool, "--undefined-only") | set(looked_up)


def made_to_fail(shim):
    """Every function that the preloaded library stands in for."""
    source = (pathlib.Path(__file__).parent / "failing_libraries.c").read_text()
    return symbols(shim, "--defined-only") | set(re.findall(r"ENTRY\((\w+)\)", source))


def unknown(tool, shim):
    """The functions that the tool calls and that are neither made to fail nor named here."""
    return called(tool) - made_to_fail(shim) - NAMED
