#include "cli/MessageBoxes.h"
#include "cli/Text.h"
#include "platform/interaction.h"
#include <istream>
#include <ostream>

namespace pixkit::cli {

MessageBoxes::MessageBoxes(Console& console) : m_console(console) {
    platform::setMessageBoxHandler(
        [this](const std::string& text, const std::string&, std::uint32_t style) { return answer(text, style); });
}

MessageBoxes::~MessageBoxes() {
    platform::setMessageBoxHandler({});
}

void MessageBoxes::about(const std::string& subject) {
    m_subject = shown(subject);
    m_refused = false;
}

void MessageBoxes::note(const std::string& text) {
    m_console.err << "pixkit: " << m_subject << ": " << text << '\n';
}

int MessageBoxes::answer(const std::string& text, std::uint32_t style) {
    if (style != platform::messageBoxYesNoQuestionDefaultNo) {
        note(text);
        return platform::answerOk;
    }
    std::string line;
    if (m_console.personAnswers) {
        m_console.err << m_subject << ": " << text << " [y/N] " << std::flush;
        std::getline(m_console.in, line);
    }
    m_refused = line.empty() || (line.front() != 'y' && line.front() != 'Y');
    return m_refused ? platform::answerNo : platform::answerYes;
}

} // namespace pixkit::cli
