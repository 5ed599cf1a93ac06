#include "cli/Text.h"
#include "shared/Text.h"

namespace pixkit::cli {

namespace {

constexpr char lowerHexDigits[] = "0123456789abcdef";

void appendHexByte(std::string& text, unsigned value) {
    text += lowerHexDigits[(value >> 4) & 15];
    text += lowerHexDigits[value & 15];
}

bool isControl(char c) {
    return static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
}

bool isAsciiAlphanumeric(char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

} // namespace

std::filesystem::path toPath(std::string_view utf8) {
    return {std::u8string(utf8.begin(), utf8.end())};
}

std::string toUtf8(const std::filesystem::path& path) {
    const std::u8string text = path.generic_u8string();
    return {text.begin(), text.end()};
}

std::string toLower(std::string_view text) {
    std::string lower(text);
    for (char& c : lower)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return lower;
}

std::string shown(std::string_view name) {
    std::string text;
    const auto append = [&](char c) {
        text += "\\x";
        appendHexByte(text, static_cast<unsigned char>(c));
    };
    for (std::size_t i = 0; i < name.size(); ++i) {
        const bool isLate = name.substr(i).starts_with('\xC2') && i + 1 < name.size() &&
                            static_cast<unsigned char>(name[i + 1]) < 0xA0; // U+0080 to U+009F
        if (isLate) {
            append(name[i]);
            append(name[++i]);
        } else if (isControl(name[i])) {
            append(name[i]);
        } else {
            text += name[i];
        }
    }
    return text;
}

std::string shownName(std::string_view file) {
    return file.empty() ? "''" : shown(file);
}

std::string jsonString(std::string_view text) {
    std::string quoted = "\"";
    while (!text.empty()) {
        const std::string_view before = text;
        const bool isCharacter = takeCharacter(text).has_value();
        const char c = before.front();
        if (!isCharacter || isControl(c)) {
            text = before.substr(1);
            quoted += isCharacter ? "\\u00" : "\\udc";
            appendHexByte(quoted, static_cast<unsigned char>(c));
        } else {
            if (c == '"' || c == '\\') quoted += '\\';
            quoted += before.substr(0, before.size() - text.size());
        }
    }
    return quoted + '"';
}

std::string htmlText(std::string_view text) {
    std::string html;
    while (!text.empty()) {
        const std::string_view before = text;
        if (!takeCharacter(text)) {
            html += "\uFFFD";
            text = before.substr(1);
            continue;
        }
        switch (before.front()) {
        case '&':
            html += "&amp;";
            break;
        case '<':
            html += "&lt;";
            break;
        case '>':
            html += "&gt;";
            break;
        case '"':
            html += "&quot;";
            break;
        default:
            html += before.substr(0, before.size() - text.size());
        }
    }
    return html;
}

std::string urlPath(std::string_view utf8) {
    constexpr std::string_view harmless = "/-._~";
    std::string url;
    for (const char c : utf8) {
        if (isAsciiAlphanumeric(c) || harmless.find(c) != std::string_view::npos) {
            url += c;
        } else {
            url += '%';
            appendHexByte(url, static_cast<unsigned char>(c));
        }
    }
    return url;
}

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
