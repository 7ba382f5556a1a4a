#include "support/GeneratedDocs.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <fstream>
#include <iterator>

namespace quill::test {

namespace {

std::string readFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

}  // namespace

void expectGeneratedSection(const std::string& document, const std::string& name, const std::string& text,
                            const std::string& made) {
    std::ofstream(made) << text;
    const std::string begin = "<!-- " + name + ": begin -->\n", end = "<!-- " + name + ": end -->";
    std::string whole = readFile(document);
    const size_t from = whole.find(begin);
    const size_t to = whole.find(end);
    ASSERT_TRUE(from != std::string::npos && to != std::string::npos && from < to)
            << document << " lacks the comments round its section \"" << name << "\"";
    const size_t start = from + begin.size();
    if (whole.substr(start, to - start) == text) return;
    const char* const update = getenv("QUILL_UPDATE_DOCS");
    if (update != nullptr && std::string(update) == "1") {
        std::ofstream(document) << whole.replace(start, to - start, text);
        return;
    }
    ADD_FAILURE() << document << " does not say what was tried, see " << made
                  << ". Run this test again with QUILL_UPDATE_DOCS=1 in the environment to rewrite it.";
}

}  // namespace quill::test
