// How pages look that the command writes.
#pragma once

namespace pixkit::cli {

// Colours, also of dark pages, and the text; each page's own rules follow.
inline constexpr const char* pageStyle = R"css(
:root { color-scheme: light dark; --page: #f4f5f7; --card: #fff; --ink: #1d2127; --soft: #5d6672; --line: #dfe3e8;
        --accent: #2457c5; --square-a: #fff; --square-b: #d5d8dd; }
@media (prefers-color-scheme: dark) {
  :root { --page: #14171b; --card: #1e2228; --ink: #e8eaee; --soft: #9aa4b1; --line: #2f353d; --accent: #8db4ff;
          --square-a: #5b6067; --square-b: #44494f; }
}
* { box-sizing: border-box; }
body { margin: 0; background: var(--page); color: var(--ink); font: 15px/1.45 system-ui, sans-serif; })css";

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
