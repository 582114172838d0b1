// Runs a pipeline of one or more commands and prints its times and memory as one line of JSON:
//
//   akbench_measure [-o FILE] [-e FILE] COMMAND [ARGUMENT...] ['|' COMMAND [ARGUMENT...]]...
//
// The first command reads /dev/null, the last one writes to the -o file, and the standard error of
// all goes to the -e file; both files are /dev/null by default. CPU time is the sum over all
// processes, peak memory that of the largest one. The status of a command terminated by a signal is
// 128 plus the signal's number.
//
// This is a small program because a process inherits the peak memory of the one that started it.
// Its exit status is 0 if every command could be started.

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <spawn.h>
#include <string>
#include <string_view>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

using Command = std::vector<char*>;

struct Pipeline {
    const char* output = "/dev/null";
    const char* errors = "/dev/null";
    std::vector<Command> commands;
};

struct Process {
    pid_t id = 0;
    int status = 0;
    rusage used{};
};

bool readOptions(Pipeline& pipeline, char**& word) {
    for (; *word != nullptr && **word == '-'; word += 2) {
        const std::string_view option = *word;
        if (word[1] == nullptr || (option != "-o" && option != "-e")) {
            return false;
        }
        (option == "-o" ? pipeline.output : pipeline.errors) = word[1];
    }
    return true;
}

/// Returns false for an unknown option and for a command without a word.
bool readPipeline(Pipeline& pipeline, char** word) {
    if (!readOptions(pipeline, word)) {
        return false;
    }
    pipeline.commands.emplace_back();
    for (; *word != nullptr; ++word) {
        if (std::string_view(*word) == "|") {
            pipeline.commands.emplace_back();
        } else {
            pipeline.commands.back().push_back(*word);
        }
    }
    for (Command& command : pipeline.commands) {
        if (command.empty()) {
            return false;
        }
        command.push_back(nullptr);
    }
    return true;
}

int opened(const char* path, int flags) {
    constexpr mode_t mode = 0600;
    const int file = open(path, flags | O_CLOEXEC, mode);
    if (file < 0) {
        std::fprintf(stderr, "akbench_measure: %s: %s\n", path, std::strerror(errno));
    }
    return file;
}

/// Starts a command with these three streams, which stay open in this process.
bool start(const Command& command, int input, int output, int errors, Process& process) {
    posix_spawn_file_actions_t streams{};
    posix_spawn_file_actions_init(&streams);
    posix_spawn_file_actions_adddup2(&streams, input, STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&streams, output, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&streams, errors, STDERR_FILENO);
    const int failure =
        posix_spawnp(&process.id, command[0], &streams, nullptr, command.data(), environ);
    posix_spawn_file_actions_destroy(&streams);
    if (failure != 0) {
        std::fprintf(stderr, "akbench_measure: %s: %s\n", command[0], std::strerror(failure));
    }
    return failure == 0;
}

/// Starts all commands. This process closes its ends of each pipe, so that a command sees end of
/// file or SIGPIPE when its neighbour ends.
bool startAll(const Pipeline& pipeline, int output, int errors, std::vector<Process>& processes) {
    int input = opened("/dev/null", O_RDONLY);
    bool started = input >= 0;
    for (std::size_t i = 0; started && i < pipeline.commands.size(); ++i) {
        const bool isLast = i + 1 == pipeline.commands.size();
        int pipeEnds[2] = {-1, output};
        started = isLast || pipe2(pipeEnds, O_CLOEXEC) == 0;
        Process process;
        started = started && start(pipeline.commands[i], input, pipeEnds[1], errors, process);
        if (started) {
            processes.push_back(process);
        }
        close(input);
        input = pipeEnds[0];
        if (!isLast) {
            close(pipeEnds[1]);
        }
    }
    close(input);
    return started;
}

void awaitAll(std::vector<Process>& processes) {
    constexpr int signalBase = 128;
    for (Process& process : processes) {
        int status = 0;
        while (wait4(process.id, &status, 0, &process.used) < 0 && errno == EINTR) {
        }
        process.status = WIFSIGNALED(status) ? signalBase + WTERMSIG(status) : WEXITSTATUS(status);
    }
}

double seconds(const timespec& time) {
    constexpr double nanosecond = 1e-9;
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * nanosecond;
}

double seconds(const timeval& time) {
    constexpr double microsecond = 1e-6;
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * microsecond;
}

double now() {
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return seconds(time);
}

void print(const std::vector<Process>& processes, double wall) {
    double cpu = 0;
    long peak = 0;
    std::string statuses;
    for (const Process& process : processes) {
        const char* separator = statuses.empty() ? "" : ",";
        cpu += seconds(process.used.ru_utime) + seconds(process.used.ru_stime);
        peak = peak < process.used.ru_maxrss ? process.used.ru_maxrss : peak;
        statuses += separator + std::to_string(process.status);
    }
    std::printf(
        R"({"wall":%.6f,"cpu":%.6f,"peak_kib":%ld,"statuses":[%s]})"
        "\n",
        wall, cpu, peak, statuses.c_str());
}

}  // namespace

int main(int /*argc*/, char** argv) {
    Pipeline pipeline;
    if (!readPipeline(pipeline, argv + 1)) {
        std::fputs(
            "Usage: akbench_measure [-o FILE] [-e FILE] COMMAND [ARGUMENT...] ['|' ...]\n", stderr);
        return 2;
    }
    constexpr int writing = O_WRONLY | O_CREAT | O_TRUNC | O_APPEND;
    const int output = opened(pipeline.output, writing);
    const int errors = opened(pipeline.errors, writing);
    std::vector<Process> processes;
    const double begin = now();
    const bool started =
        output >= 0 && errors >= 0 && startAll(pipeline, output, errors, processes);
    awaitAll(processes);
    const double wall = now() - begin;
    if (!started) {
        return 1;
    }
    print(processes, wall);
    return 0;
}
