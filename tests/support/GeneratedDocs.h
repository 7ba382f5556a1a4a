#pragma once

#include <string>

namespace quill::test {

/**
 * Holds a section of a document, between the comments `<!-- NAME: begin -->` and `<!-- NAME: end -->`, against what a
 * test has made, which is left at `made` too. With QUILL_UPDATE_DOCS=1 in the environment the document is rewritten.
 */
void expectGeneratedSection(const std::string& document, const std::string& name, const std::string& text,
                            const std::string& made);

}  // namespace quill::test
