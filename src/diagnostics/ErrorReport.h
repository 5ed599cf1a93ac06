// Who hears of failures that nobody expected, and what they are told.
#pragma once
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
    std::string procedure;             // the public member, or the reader, that trapped the error
    std::string description;           // what the run-time error says of itself
    std::string module;                // the source file of that procedure, such as "render/Resize.cpp"
    std::uint32_t line = 0;            // where in it the procedure is guarded
    std::vector<Parameter> parameters; // what the procedure was called with, as far as its guard says
    std::vector<Variable> variables;   // how the instance stood after the failure
};

using ErrorReportHandler = std::function<void(const ErrorReport&)>;

// Who hears of trapped run-time errors, in the whole process; an empty handler (the initial state) ends that. What the
// handler throws is lost.
void setErrorReportHandler(ErrorReportHandler handler);

} // namespace pixkit
