#include "cli/Progress.h"
#include <ostream>

namespace pixkit::cli {

namespace {
constexpr const char* startOfEmptyLine = "\r\x1b[K";
}

void Progress::nextItem(const std::string& name) {
    m_name = name;
    ++m_item;
    if (m_console.personWatches) return;
    writeItem();
    m_console.err << std::endl;
}

void Progress::part(std::size_t done, std::size_t parts) {
    if (!m_console.personWatches) return;
    m_console.err << startOfEmptyLine;
    writeItem();
    m_console.err << ": " << done << " of " << parts << std::flush;
    m_shown = true;
}

void Progress::clear() {
    if (m_shown) m_console.err << startOfEmptyLine << std::flush;
    m_shown = false;
}

void Progress::writeItem() {
    m_console.err << '[' << m_item << '/' << m_items << "] " << m_name;
}

} // namespace pixkit::cli
