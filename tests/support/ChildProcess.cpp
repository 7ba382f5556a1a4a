#include "support/ChildProcess.h"

#include <stdio.h>
#include <sys/wait.h>
#include <unistd.h>

#include <list>
#include <sstream>
#include <stdexcept>

#include "support/TemporaryFiles.h"

/** There in builds that count coverage, which otherwise is written by the exit handlers. */
extern "C" [[gnu::weak]] void __gcov_dump();  // NOLINT(bugprone-reserved-identifier)

namespace quill::test {

namespace {

/** A process that writes what `body` returns into a file. */
struct Child {
    explicit Child(const std::function<std::string()>& body) {
        fflush(nullptr);
        id = fork();
        if (id < 0) throw std::runtime_error("no child process");
        if (id > 0) return;
        try {
            std::ofstream(output.path()) << body();
        } catch (const std::exception& exception) {
            std::ofstream(output.path()) << "threw " << exception.what();
        }
        if (__gcov_dump != nullptr) __gcov_dump();
        _exit(0);  // past the exit handlers: threads of the body may still run
    }

    std::string outcome() const {
        int status = 0;
        waitpid(id, &status, 0);
        if (WIFSIGNALED(status)) return "died of signal " + std::to_string(WTERMSIG(status));
        if (WEXITSTATUS(status) != 0) return "exited with " + std::to_string(WEXITSTATUS(status));
        const std::vector<uint8_t> text = output.bytes();
        return {text.begin(), text.end()};
    }

    const TemporaryFile output;
    pid_t id;
};

}  // namespace

std::string inChild(const std::function<std::string()>& body) { return Child(body).outcome(); }

std::vector<std::string> inChildren(const std::vector<std::function<std::string()>>& bodies) {
    const std::list<Child> children(bodies.begin(), bodies.end());
    std::vector<std::string> outcomes;
    for (const Child& child : children) outcomes.push_back(child.outcome());
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
