// How far long work has come.
#pragma once
#include "cli/Console.h"
#include <cstddef>
#include <string>

namespace pixkit::cli {

// On a terminal one line that is rewritten as work goes on; else one line for each item.
class Progress {
  public:
    Progress(Console& console, std::size_t items) : m_console(console), m_items(items) {}
    ~Progress() { clear(); }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void nextItem(const std::string& name);
    // Within the item: `done` of `parts`.
    void part(std::size_t done, std::size_t parts);
    // Takes the line away, so that a message can be written.
    void clear();

  private:
    std::string line() const;
    void rewrite(const std::string& line);

    Console& m_console;
    std::size_t m_items;
    std::size_t m_item = 0;
    std::string m_name;
    std::size_t m_shownLength = 0;
};

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
