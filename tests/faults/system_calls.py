"""How system calls fail: for each what a fault injects, mostly errno values.

EINTR and EAGAIN come once only: a call that is interrupted is tried again, and one that is
interrupted for ever has no end.
"""

# execve: the run begins after it. futex: there is one thread, which wakes nobody and never waits.
CANNOT_FAIL = {"execve", "exit_group", "futex", "getpid", "geteuid", "gettid", "getuid", "getgid",
               "getegid", "set_tid_address", "umask", "rt_sigreturn"}  # fmt: skip

INTERRUPTIONS = {"EINTR", "EAGAIN"}

# brk fails by returning an end of the heap that is below the one asked for.
RETURN_VALUES = {"brk": "0"}

ERRORS = {
    "brk": ["ENOMEM"],
    "access": ["EACCES"],
    "arch_prctl": ["EINVAL"],
    "clock_gettime": ["EINVAL"],
    "clone": ["ENOMEM"],
    "clone3": ["ENOMEM"],
    "close": ["EIO", "EINTR"],
    "connect": ["ECONNREFUSED", "EINTR"],
    "faccessat2": ["EACCES"],
    "fcntl": ["EINVAL"],
    "fstatfs": ["EIO"],
    "ftruncate": ["EIO"],
    "getdents64": ["EIO"],
    "getpeername": ["ENOTCONN"],
    "getrandom": ["ENOSYS", "EINTR"],
    "getsockname": ["ENOBUFS"],
    "getsockopt": ["ENOBUFS"],
    "ioctl": ["EIO"],
    "lseek": ["ESPIPE"],
    "madvise": ["EINVAL"],
    "mmap": ["ENOMEM"],
    "mprotect": ["ENOMEM"],
    "mremap": ["ENOMEM"],
    "munmap": ["ENOMEM"],
    "newfstatat": ["EACCES"],
    "openat": ["EMFILE", "EACCES"],
    "pipe2": ["EMFILE"],
    "poll": ["ENOMEM", "EINTR"],
    "ppoll": ["ENOMEM", "EINTR"],
    "pread64": ["EIO"],
    "prctl": ["EINVAL"],
    "prlimit64": ["EPERM"],
    "read": ["EIO", "EINTR"],
    "readlink": ["EACCES"],
    "readlinkat": ["EACCES"],
    "recvfrom": ["ECONNRESET", "EINTR"],
    "recvmsg": ["ECONNRESET", "EINTR"],
    "rseq": ["ENOSYS"],
    "rt_sigaction": ["EINVAL"],
    "rt_sigprocmask": ["EINVAL"],
    "rt_sigtimedwait": ["EINTR"],
    "sendto": ["ECONNRESET", "EINTR"],
    "set_robust_list": ["EINVAL"],
    "setsockopt": ["ENOBUFS"],
    "socket": ["EMFILE"],
    "socketpair": ["EMFILE"],
    "statfs": ["EIO"],
    "sysinfo": ["EFAULT"],
    "uname": ["EFAULT"],
    "write": ["ENOSPC", "EPIPE", "EINTR"],
    "writev": ["ENOSPC", "EINTR"],
}


def injection(call, error):
    """What strace is told to let the call do."""
    value = RETURN_VALUES.get(call)
    return f"error={error}" if value is None else f"retval={value}"
