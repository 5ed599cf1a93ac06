// Where the command talks and listens, as one value, so that tests can listen in.
#pragma once
#include <iosfwd>

namespace pixkit::cli {

struct Console {
    std::istream& in;
    std::ostream& out;
    std::ostream& err;
    bool personAnswers = false; // `in` is a terminal: questions make sense
    bool personWatches = false; // `err` is a terminal: a line may be rewritten in place
};

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
