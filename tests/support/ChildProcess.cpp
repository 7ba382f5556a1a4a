#include "support/ChildProcess.h"

#include <stdio.h>
#include <sys/wait.h>
#include <unistd.h>

#include <sstream>
#include <stdexcept>

/** There in builds that count coverage, which otherwise is written by the exit handlers. */
extern "C" [[gnu::weak]] void __gcov_dump();

namespace quill::test {

namespace {

void writeAll(int fd, const std::string& text) {
    size_t written = 0;
    while (written < text.size()) {
        const ssize_t count = write(fd, text.data() + written, text.size() - written);
        if (count <= 0) _exit(1);
        written += static_cast<size_t>(count);
    }
}

std::string readAll(int fd) {
    std::string text;
    char chunk[4096];
    ssize_t count;
    while ((count = read(fd, chunk, sizeof(chunk))) > 0) text.append(chunk, static_cast<size_t>(count));
    return text;
}

std::string outcomeOf(const std::function<std::string()>& body) {
    try {
        return body();
    } catch (const std::exception& exception) {
        return std::string("threw ") + exception.what();
    }
}

struct Child {
    pid_t id;
    int output;
};

Child startChild(const std::function<std::string()>& body) {
    int pipeEnds[2];
    if (pipe(pipeEnds) != 0) throw std::runtime_error("no pipe");
    fflush(nullptr);
    const pid_t id = fork();
    if (id < 0) throw std::runtime_error("no child process");
    if (id == 0) {
        close(pipeEnds[0]);
        writeAll(pipeEnds[1], outcomeOf(body));
        if (__gcov_dump != nullptr) __gcov_dump();
        _exit(0);  // past the exit handlers: threads of the body may still run
    }
    close(pipeEnds[1]);
    return {id, pipeEnds[0]};
}

std::string outcomeOf(const Child& child) {
    std::string text = readAll(child.output);
    close(child.output);
    int status = 0;
    waitpid(child.id, &status, 0);
    if (WIFSIGNALED(status)) return "died of signal " + std::to_string(WTERMSIG(status));
    return WEXITSTATUS(status) == 0 ? text : "exited with " + std::to_string(WEXITSTATUS(status));
}

}  // namespace

std::string inChild(const std::function<std::string()>& body) { return inChildren({body}).front(); }

std::vector<std::string> inChildren(const std::vector<std::function<std::string()>>& bodies) {
    std::vector<Child> children;
    for (const auto& body : bodies) children.push_back(startChild(body));
    std::vector<std::string> outcomes;
    for (const Child& child : children) outcomes.push_back(outcomeOf(child));
    return outcomes;
}

std::string joined(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines) text += line + '\n';
    return text;
}

std::vector<std::string> cutIntoLines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}

}  // namespace quill::test
