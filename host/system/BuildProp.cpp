#include "BuildProp.h"

namespace quill::host {

namespace {

const char kBlanks[] = " \t\r";

std::string_view trimmed(std::string_view text) {
    const size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

/** Removes the text before the separator from `rest` and returns it. */
std::string_view takeUntil(char separator, std::string_view* rest) {
    const size_t end = rest->find(separator);
    const std::string_view taken = rest->substr(0, end);
    *rest = end == std::string_view::npos ? std::string_view() : rest->substr(end + 1);
    return taken;
}

struct Property {
    std::string_view key;  // empty if this is not a property
    std::string_view value;
};

Property parseProperty(std::string_view text) {
    const size_t equals = text.find('=');
    if (equals == std::string_view::npos) return {};
    return {trimmed(text.substr(0, equals)), trimmed(text.substr(equals + 1))};
}

}  // namespace

std::map<std::string, std::string> parseBuildProp(std::string_view text) {
    std::map<std::string, std::string> properties;
    while (!text.empty()) {
        const Property property = parseProperty(takeUntil('\n', &text));
        if (property.key.empty() || property.key.front() == '#') continue;
        properties[std::string(property.key)] = property.value;
    }
    return properties;
}

std::optional<std::string> findOverride(std::string_view overrides, std::string_view key) {
    std::optional<std::string> value;
    while (!overrides.empty()) {
        const Property property = parseProperty(takeUntil(',', &overrides));
        if (!property.key.empty() && property.key == key) value = property.value;
    }
    return value;
}

}  // namespace quill::host
