#include "cli/Commands.h"
#include "platform/console.h"
#include "platform/gdiplus.h"
#include <iostream>

int main(int argc, char** argv) {
    using namespace pixkit;
    platform::occupyStandardStreams();
    const platform::Utf8Console utf8Console;
    platform::setGdiplusProvider([] { return platform::GdiplusApi(); }); // none: the same bytes on every system
    cli::Console console{std::cin, std::cout, std::cerr, platform::isTerminal(platform::StandardStream::input),
                         platform::isTerminal(platform::StandardStream::error)};
    return cli::run(platform::commandLineArguments(argc, argv), console);
}
// SPDX-License-Identifier: MIT
