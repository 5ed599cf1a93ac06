#include "cli/ComposeLayer.h"
#include "cli/EffectParsing.h"
#include "cli/Files.h"
#include "cli/Mistakes.h"
#include <algorithm>
#include <array>
#include <utility>

namespace pixkit::cli {

namespace {

using Mode = Scaling::Mode;

constexpr std::array<std::pair<std::string_view, Mode>, 4> modes = {
    {{"fit", Mode::fit}, {"down", Mode::down}, {"stretch", Mode::stretch}, {"fill", Mode::fill}}};

bool readPercentage(std::string_view text, double& percent) {
    if (!text.ends_with('%')) return false;
    text.remove_suffix(1);
    return parseEntirely(text, percent) && percent > 0 && percent <= 10000;
}

// Empty is open.
bool readSide(std::string_view text, Scaling::Side& side) {
    side = {};
    if (text.empty()) return true;
    std::int32_t pixels = 0;
    side.isPercent = text.ends_with('%');
    if (side.isPercent) return readPercentage(text, side.length);
    side.length = parseEntirely(text, pixels) ? pixels : 0;
    return side.length > 0;
}

bool readBox(std::string_view text, Scaling& scaling) {
    const std::size_t x = text.find('x');
    Scaling read = scaling;
    if (x == std::string_view::npos || text.size() == 1 || !readSide(text.substr(0, x), read.width) ||
        !readSide(text.substr(x + 1), read.height)) {
        return false;
    }
    scaling = read;
    return true;
}

// Reads the parts of one layer, each kind once.
class PartReader {
  public:
    explicit PartReader(ComposeLayer& layer) : m_layer(layer) {}

    // False when it is none, or of a kind that was there before. Throws UsageError for a percentage out of range.
    bool read(std::string_view part) {
        const auto mode = std::ranges::find(modes, part, &std::pair<std::string_view, Mode>::first);
        if (!m_hasMode && !m_hasFactor && mode != modes.end()) {
            m_layer.scaling.mode = mode->second;
            return m_hasMode = true;
        }
        if (!m_hasBox && !m_hasFactor && readBox(part, m_layer.scaling)) {
            if (!m_hasMode) m_layer.scaling.mode = Mode::fit;
            return m_hasBox = true;
        }
        if (!m_hasBox && !m_hasMode && !m_hasFactor && part.starts_with("scale=") &&
            readPercentage(part.substr(6), m_layer.scaling.percent)) {
            m_layer.scaling.mode = Mode::byFactor;
            return m_hasFactor = true;
        }
        return !m_hasOpacity && readOpacity(part);
    }

  private:
    bool readOpacity(std::string_view part) {
        constexpr std::string_view key = "opacity=";
        const bool hasKey = part.starts_with(key);
        if (hasKey) part.remove_prefix(key.size());
        if (part.ends_with('%')) {
            part.remove_suffix(1);
        } else if (!hasKey) {
            return false;
        }
        std::int32_t percent = 0;
        if (!parseEntirely(part, percent)) return false;
        if (percent < 1 || percent > 100) {
            throw UsageError(std::to_string(percent) + " is not a percentage from 1 to 100");
        }
        m_layer.opacity = percent;
        return m_hasOpacity = true;
    }

    ComposeLayer& m_layer;
    bool m_hasMode = false, m_hasBox = false, m_hasFactor = false, m_hasOpacity = false;
};

// A name that is no file, although its beginning is one: what stands behind that was meant to be something else.
void explainRest(const std::string& name) {
    constexpr const char* signs = "@:";
    if (isFile(name)) return;
    std::size_t sign = name.find_first_of(signs, 1);
    while (sign != std::string::npos && !isFile(name.substr(0, sign)))
        sign = name.find_first_of(signs, sign + 1);
    if (sign == std::string::npos) return;
    const std::string rest = name.substr(sign);
    while (sign != std::string::npos) {
        const std::size_t next = name.find_first_of(signs, sign + 1);
        const std::string part = name.substr(sign + 1, std::min(next, name.size()) - sign - 1);
        ComposeLayer layer;
        if (name[sign] == '@') {
            parsePlace(part);
        } else if (!PartReader(layer).read(part)) {
            constexpr std::string_view known[] = {"fit", "down", "stretch", "fill", "scale=50%", "opacity=50%"};
            throw UsageError("'" + part + "' is neither an opacity nor a size; " +
                             suggestionOr(part, known,
                                          "write one as 60%, the other as 640x480, 640x, x480, 20%x, scale=50%, fit, "
                                          "down, stretch or fill"));
        }
        sign = next;
    }
    throw UsageError("'" + rest +
                     "' stands twice or at the wrong place; write the file, then @PLACE, then each part once");
}

} // namespace

ComposeLayer parseLayer(const std::string& text) {
    try {
        ComposeLayer layer;
        PartReader parts(layer);
        std::string_view rest = text;
        for (std::size_t colon = rest.rfind(':'); colon != std::string_view::npos && parts.read(rest.substr(colon + 1));
             colon = rest.rfind(':')) {
            rest = rest.substr(0, colon);
        }
        const std::size_t at = rest.rfind('@');
        if (at != std::string_view::npos) {
            if (const auto place = readPlace(rest.substr(at + 1))) {
                layer.place = *place;
                rest = rest.substr(0, at);
            }
        }
        layer.file = rest;
        if (layer.file.empty()) throw UsageError("names no picture");
        explainRest(layer.file);
        return layer;
    } catch (const UsageError& error) {
        throw UsageError("'" + text + "': " + error.what());
    }
}

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
