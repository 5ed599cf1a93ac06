// Who hears of failures that nobody expected, and what they are told.
#pragma once
#include "platform/api.h"
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace pixkit {

struct ErrorReport {
    struct Parameter {
        std::string name;
        std::string value; // in words: numbers in decimal, text cut after 80 bytes, arrays by their length
    };
    using Variable = Parameter;
    struct Version {
        std::string name, number;
    };
    std::string procedure;             // the public member, or the reader, that trapped the error
    std::string description;           // what the run-time error says of itself
    std::string module;                // the source file of that procedure, such as "render/Resize.cpp"
    std::uint32_t line = 0;            // where in it the procedure is guarded
    std::vector<Parameter> parameters; // what the procedure was called with, as far as its guard says
    std::vector<Variable> variables;   // how the instance stood after the failure
    std::vector<Version> versions;     // of the component, the system, and the libraries that it has borrowed
    bool isUnattended = false;         // nobody is there to be shown anything
    std::string text;                  // all of that for people to read; lines end with \n
};

using ErrorReportHandler = std::function<void(const ErrorReport&)>;

// Who hears of trapped run-time errors, in the whole process; an empty handler (the initial state) ends that. What the
// handler throws is lost.
PIXKIT_API void setErrorReportHandler(ErrorReportHandler handler);

// Shows a report to the person in front of the program, and returns when that has been read. False: it could not be
// shown, so that the next like it may be.
using ErrorReportPresenter = std::function<bool(const ErrorReport&)>;

// Who shows reports, in the whole process, after the handler has heard of them; an empty presenter (the initial state)
// ends that. The COM component begins with showErrorReport; other programs for Windows do if they ask:
//     setErrorReportPresenter(showErrorReport);
// A presenter is called for one report at a time (meanwhile others only go to the handler), once for the same error at
// the same place, for at most a hundred places, and never when nobody is there.
PIXKIT_API void setErrorReportPresenter(ErrorReportPresenter presenter);

// The component's dialog, "Application Error": the text to scroll and copy, modal to the host's windows. False, and
// nothing shown, on systems without windows, in processes that nobody sees, and while a DLL is being loaded or freed.
PIXKIT_API bool showErrorReport(const ErrorReport& report);

} // namespace pixkit
// SPDX-License-Identifier: MIT
