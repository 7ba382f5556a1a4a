#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace quill::host {

/** The properties of a build.prop: one `key=value` per line, # starts a comment line; of a key given twice the last. */
std::map<std::string, std::string> parseBuildProp(std::string_view text);

/** The value of `key` in `key=value,key=value`, so neither holds a comma. Nothing when it is not among them. */
std::optional<std::string> findOverride(std::string_view overrides, std::string_view key);

}  // namespace quill::host
