#include "saving/Delivery.h"
#include "platform/interaction.h"
#include "saving/NeighbourFile.h"
#include "shared/Files.h"
#include <utility>

namespace pixkit {

namespace {

// Whether the file exists is asked through the desktop's own choice of functions, everything else goes through the
// system's.
bool mayBeReplaced(const std::string& name) {
    return !iparseFileExists(name, false) ||
           platform::MessageBoxW("Overwrite existing file?", "Overwrite Confirmation",
                                 platform::messageBoxYesNoQuestionDefaultNo) == platform::answerYes;
}

} // namespace

bool deliverToStream(ByteArray& outStream, WrittenFile&& file) {
    if (!file) return false;
    outStream = ByteArray(std::move(*file).join());
    return true;
}

bool deliverToFile(const FileTarget& target, const std::function<WrittenFile()>& write) {
    if (target.name.empty() || (target.promptOverwrite && !mayBeReplaced(target.name)) ||
        iparseIsDirectory(target.name, target.useUnicode)) {
        return false;
    }
    NeighbourFile neighbour(target.name, target.useUnicode);
    if (!neighbour.exists()) return false; // before the work of writing
    const WrittenFile file = write();
    return file && neighbour.write(file->pieces()) && neighbour.takeItsPlace();
}

} // namespace pixkit
