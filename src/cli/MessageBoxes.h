// What the component asks and says through message boxes, taken to the console.
#pragma once
#include "cli/Console.h"
#include <cstdint>
#include <string>

namespace pixkit::cli {

// In force for a scope. Questions go to the person at the terminal; without one the answer is the careful one.
class MessageBoxes {
  public:
    explicit MessageBoxes(Console& console);
    ~MessageBoxes();
    MessageBoxes(const MessageBoxes&) = delete;
    MessageBoxes& operator=(const MessageBoxes&) = delete;

    // What the next boxes are about, as they do not say it themselves. Forgets the last answer.
    void about(const std::string& subject);
    // Says something about it.
    void note(const std::string& text);
    // Whether the last question was answered with No.
    bool refused() const noexcept { return m_refused; }

  private:
    int answer(const std::string& text, std::uint32_t style);

    Console& m_console;
    std::string m_subject;
    bool m_refused = false;
};

} // namespace pixkit::cli
