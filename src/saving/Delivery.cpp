#include "saving/Delivery.h"
#include "platform/interaction.h"
#include "saving/OutputFile.h"
#include "shared/Files.h"
#include <utility>

namespace pixkit {

namespace {

// Whether the file exists is asked through the desktop's own choice of functions, everything else goes through the
// system's.
Outcome mayBeReplaced(const FileTarget& target) {
    if (!target.promptOverwrite || !iparseFileExists(target.name, false)) return done();
    if (!target.isAttended) return refused("the file exists already, and nobody is there to ask");
    const int answer = platform::MessageBoxW("Overwrite existing file?", "Overwrite Confirmation",
                                             platform::messageBoxYesNoQuestionDefaultNo);
    return doneIf(answer == platform::answerYes, "the file exists already and was kept");
}

} // namespace

Outcome deliverToStream(ByteArray& outStream, WrittenFile&& file) {
    if (file.outcome()) outStream = ByteArray(std::move(file.parts()).join());
    return file.outcome();
}

Outcome deliverToFile(const FileTarget& target, const std::function<WrittenFile()>& write) {
    if (target.name.empty()) return refused("the name of the file is empty");
    Outcome allowed = mayBeReplaced(target);
    if (iparseIsDirectory(target.name, target.useUnicode)) return refused("it is a folder");
    if (!allowed) return allowed;
    OutputFile output(target.name, target.useUnicode);
    if (!output.outcome()) return output.outcome(); // before the work of writing
    WrittenFile file = write();
    if (!file.outcome()) return file.outcome();
    return output.save(file.parts().pieces());
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
