#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace quill::host {

/** The properties of a build.prop: a `key=value` per line, `#` for a comment line. The last value of a key counts. */
std::map<std::string, std::string> parseBuildProp(std::string_view text);

/** The value of `key` in `key=value,key=value`; nothing if it is not there. Keys and values have no commas. */
std::optional<std::string> findOverride(std::string_view overrides, std::string_view key);

}  // namespace quill::host
