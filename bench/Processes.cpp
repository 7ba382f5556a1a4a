#include "Processes.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <sstream>
#include <stdexcept>

#include "Rows.h"

namespace quill::bench {

namespace {

std::string asText(const std::vector<std::string>& command) {
    std::string text;
    for (const std::string& word : command) text += (text.empty() ? "" : " ") + word;
    return text;
}

/** stdin from nowhere, stdout to `output`. */
pid_t spawn(const std::vector<std::string>& command, int output) {
    std::vector<char*> arguments;
    arguments.reserve(command.size() + 1);
    for (const std::string& word : command) arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_addopen(&files, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&files, output, STDOUT_FILENO);
    pid_t child = 0;
    const int error = posix_spawnp(&child, arguments[0], &files, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&files);
    if (error != 0) throw std::runtime_error("cannot start " + command[0]);
    return child;
}

std::string readAll(int fd) {
    std::string text;
    char chunk[4096];
    ssize_t count;
    while ((count = read(fd, chunk, sizeof(chunk))) > 0) text.append(chunk, static_cast<size_t>(count));
    return text;
}

void expectSuccess(const std::vector<std::string>& command, int status) {
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) throw std::runtime_error("failed: " + asText(command));
}

}  // namespace

std::string run(const std::vector<std::string>& command) {
    int pipeEnds[2];
    if (pipe2(pipeEnds, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
    const pid_t child = spawn(command, pipeEnds[1]);
    close(pipeEnds[1]);
    std::string text = readAll(pipeEnds[0]);
    close(pipeEnds[0]);
    int status = 0;
    waitpid(child, &status, 0);
    expectSuccess(command, status);
    return text;
}

Usage usageOf(const std::vector<std::string>& command) {
    constexpr double kBytesPerKilobyte = 1024;
    const double seconds = secondsOf([&] { run(command); });
    rusage usage{};
    getrusage(RUSAGE_CHILDREN, &usage);
    return {seconds, kBytesPerKilobyte * static_cast<double>(usage.ru_maxrss)};
}

std::vector<double> askChild(const std::vector<std::string>& arguments) {
    std::vector<std::string> command{QUILL_BENCH_CHILD};
    command.insert(command.end(), arguments.begin(), arguments.end());
    std::istringstream answer(run(command));
    std::vector<double> numbers;
    for (double number; answer >> number;) numbers.push_back(number);
    if (numbers.empty()) throw std::runtime_error("no figures from " + asText(command));
    return numbers;
}

}  // namespace quill::bench
