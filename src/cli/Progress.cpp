#include "cli/Progress.h"
#include "cli/Text.h"
#include <algorithm>
#include <ostream>
#include <sstream>

namespace pixkit::cli {

void Progress::nextItem(const std::string& name) {
    m_name = shown(name);
    ++m_item;
    if (!m_console.personWatches) m_console.err << line() << std::endl;
}

void Progress::part(std::size_t done, std::size_t parts) {
    if (!m_console.personWatches) return;
    std::ostringstream text;
    text << line() << ": " << done << " of " << parts;
    rewrite(text.str());
}

void Progress::clear() {
    if (m_shownLength == 0) return;
    rewrite("");
    m_console.err << '\r' << std::flush;
}

std::string Progress::line() const {
    std::ostringstream text;
    text << '[' << m_item << '/' << m_items << "] " << m_name;
    return text.str();
}

// Spaces cover what the line before left: not every console knows how to erase.
void Progress::rewrite(const std::string& line) {
    const std::size_t length = line.size();
    m_console.err << '\r' << line << std::string(std::max(m_shownLength, length) - length, ' ') << std::flush;
    m_shownLength = length;
}

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
