// The options that a tool's texts name.
#ifndef TOOLS_OPTIONS_H
#define TOOLS_OPTIONS_H

#include <regex>
#include <set>
#include <string>

// Of a help text or of a manual page, where hyphens are escaped.
inline std::set<std::string> optionsIn(const std::string& text) {
    const std::string plain = std::regex_replace(text, std::regex(R"(\\-)"), "-");
    const std::regex option("--[a-z]+");
    const std::sregex_token_iterator first(plain.begin(), plain.end(), option), end;
    return {first, end};
}

#endif
