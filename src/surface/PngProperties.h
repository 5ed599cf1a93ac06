// What an instance wants said in, and done with, the PNG files that it saves.
#pragma once
#include "diagnostics/Outcome.h"
#include "shared/Text.h"
#include "shared/enumerations.h"
#include "surface/Records.h"
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace pixkit {

using PngTime = CalendarTime;

class PngProperties {
  public:
    // See cPixSheet::PngPropertySet and PngPropertyGet.
    Outcome set(ePngProperties property, const PngValue& value, const std::string& keyword);
    PngValue get(ePngProperties property, const std::string& keyword) const;

    // Adds a text of a file's, whose keyword may be there already. False, and nothing added, for what PNG does not
    // allow.
    bool addText(std::string keyword, std::string value);
    // What the file of the image said: it fills what is not set here, text by text. Null where it said nothing.
    const std::shared_ptr<const PngProperties>& loaded() const noexcept { return m_loaded; }
    void loaded(std::shared_ptr<const PngProperties> value) noexcept { m_loaded = std::move(value); }

    // --- for the writer

    struct Text {
        std::string keyword, value; // UTF-8
    };
    // In the order in which the keywords first came; those of the file last.
    std::vector<const Text*> texts() const;
    std::optional<std::int32_t> backgroundColor() const noexcept { return number(pngBackgroundColor); }
    // Pixels in a metre; an axis that was not set has the other's.
    std::optional<std::pair<std::int32_t, std::int32_t>> density() const noexcept;
    const std::optional<PngTime>& lastModified() const noexcept { return m_lastModified; }
    int compressionLevel() const noexcept { return number(pngCompressionLevel).value_or(6); }
    eFilterMethods filter() const noexcept {
        return static_cast<eFilterMethods>(number(pngFilterMethod).value_or(filterDefault));
    }
    bool isInterlaced() const noexcept { return number(pngInterlaced).value_or(0) != 0; }

  private:
    Outcome setText(const std::string& keyword, const PngValue& value);
    Outcome setTime(const PngValue& value);
    Outcome setNumber(ePngProperties property, const PngValue& value);
    bool hasDensity() const noexcept { return number(pngPixelsPerMeterX) || number(pngPixelsPerMeterY); }
    void dropLoaded(ePngProperties property, const std::string& keyword);
    std::optional<std::int32_t> number(ePngProperties property) const noexcept;

    std::vector<Text> m_texts;
    std::vector<std::pair<ePngProperties, std::int32_t>> m_numbers;
    std::optional<PngTime> m_lastModified;
    std::shared_ptr<const PngProperties> m_loaded;
};

} // namespace pixkit
// SPDX-License-Identifier: MIT
