// Results on their way into files.
#pragma once
#include "cli/Commands.h"
#include "cli/Files.h"
#include "cli/MessageBoxes.h"
#include "cli/Text.h"
#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>

namespace pixkit {
class cPixSheet;
}

namespace pixkit::cli {

// One file could not be read or written; the reason goes to the person, the rest goes on.
class Failed : public std::runtime_error {
  public:
    Failed(const std::string& file, std::string_view reason)
        : std::runtime_error(shown(file) + ": " + std::string(reason)) {}
};

// Whether the options suit the format that the result will have. Throws UsageError.
void checkSaving(const SavingOptions& options, FileFormat format);

// Saves in the format that the target's extension says. Throws Failed.
void savePicture(cPixSheet& sheet, const std::filesystem::path& target, const SavingOptions& options,
                 MessageBoxes& boxes);

} // namespace pixkit::cli
