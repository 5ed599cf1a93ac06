// The picture that the viewer has open: where it came from, how it is turned, and why something failed.
#pragma once
#include "Sheet.h"
#include <shellapi.h>

namespace viewer {

class Picture {
  public:
    // Opens a file. If that fails, it is still the file from which next() and previous go on, and nothing is shown.
    bool open(const std::wstring& file);
    // The file that stands so many places behind this one in its folder, in the order of the Explorer, round and round.
    bool openNeighbour(int places);
    // The first of the files that loads. If none does, the picture stays.
    bool drop(HDROP files);
    // What is on the clipboard, as a picture or else as files. If that fails, the picture stays.
    bool paste();

    // The picture as it is shown goes onto the clipboard, or into a file of the format that its extension names.
    bool copy();
    bool save(const std::wstring& file);

    // How it is shown. The loaded pixels stay, so that turning back gives them back.
    void turn(int degrees); // clockwise
    void mirror(bool leftAndRight);
    void toggleGrayscale();
    bool isGray() const { return m_isGray; }

    // Turned, mirrored and gray as it is shown, at its own size.
    const Sheet& shown() const { return isChanged() ? m_changed : m_loaded; }
    bool isEmpty() const { return m_loaded.isEmpty(); }
    const std::wstring& file() const { return m_file; }   // empty: it came from the clipboard, or there is none
    std::wstring name() const;                            // without its folder
    const std::wstring& error() const { return m_error; } // empty after success
    bool fail(const std::wstring& what);                  // what went wrong elsewhere; returns false

  private:
    bool isChanged() const { return m_angle != 0 || m_isMirrored || m_isGray; }
    void show(Sheet&& sheet, const std::wstring& file);
    void change();

    Sheet m_loaded, m_changed;
    std::wstring m_file, m_error;
    int m_angle = 0;           // degrees clockwise, 0 .. 359, after mirroring
    bool m_isMirrored = false; // left and right; top and bottom are that and half a turn
    bool m_isGray = false;
};

} // namespace viewer
// SPDX-License-Identifier: MIT
