#pragma once

#include <functional>
#include <string>
#include <vector>

namespace quill::test {

/**
 * What `body` returns, run in a process of its own: for tables of cases over what is read once a process (the codec
 * list, the capability manager). To be called while the calling process has one thread. A child that dies gives
 * "died of signal N".
 */
std::string inChild(const std::function<std::string()>& body);
/** What each of `bodies` returns, all running at once. */
std::vector<std::string> inChildren(const std::vector<std::function<std::string()>>& bodies);

/** Lines joined to one text, and a text cut into its lines. */
std::string joined(const std::vector<std::string>& lines);
std::vector<std::string> cutIntoLines(const std::string& text);

}  // namespace quill::test
