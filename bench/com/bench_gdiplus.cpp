// What GDI+ costs a host that draws and loads many small icons: with the bridge kept from call to call, and without.
// Also how long instances take to make, which ask whether GDI+ can be started.
#include "platform/gdiplus.h"
#include "surface/cPixSheet.h"
#include <algorithm>
#include <chrono>
#include <cstdio>

namespace {

using namespace pixkit;

constexpr int icons = 200;

// Milliseconds: the best of several rounds.
template <class Body>
double timed(Body body) {
    double best = 1e9;
    for (int round = 0; round < 7; ++round) {
        const auto start = std::chrono::steady_clock::now();
        body();
        const std::chrono::duration<double, std::milli> taken = std::chrono::steady_clock::now() - start;
        best = std::min(best, taken.count());
    }
    return best;
}

enum class Use { off, on, kept };

void set(cPixSheet& sheet, Use use) {
    sheet.isGDIplusEnabled(use != Use::off);
    sheet.KeepGDIplusActive(use == Use::kept);
}

double drawing(Use use) {
    cPixSheet icon, host;
    icon.InitializeDIB(16, 16);
    icon.CreateCheckerBoard(3);
    host.InitializeDIB(320, 320);
    set(icon, use);
    icon.isAlphaBlendFriendly(false);
    return timed([&] {
        for (int i = 0; i < icons; ++i)
            icon.Render(0, i % 20 * 16, i / 20 * 16, 0, 0, 0, 0, 0, 0, 100, true, true, &host);
    });
}

double loading(Use use) {
    cPixSheet icon;
    icon.InitializeDIB(16, 16);
    icon.CreateCheckerBoard(3);
    ByteArray file;
    icon.SaveToStream_PNG(file);
    return timed([&] {
        for (int i = 0; i < icons; ++i) {
            set(icon, use);
            icon.LoadPicture_Stream(file);
        }
    });
}

double creating(bool isAlone) {
    const auto one = isAlone ? nullptr : std::make_unique<cPixSheet>();
    return timed([] {
        for (int i = 0; i < 1000; ++i)
            const cPixSheet sheet;
    });
}

void report(const char* what, double milliseconds) {
    std::printf("%-58s %9.3f ms\n", what, milliseconds);
}

} // namespace

int main() {
    platform::setGdiplusProvider({});
    report("200 icons drawn without GDI+", drawing(Use::off));
    report("200 icons drawn with GDI+", drawing(Use::on));
    report("200 icons drawn with KeepGDIplusActive", drawing(Use::kept));
    report("200 icons loaded without GDI+", loading(Use::off));
    report("200 icons loaded with GDI+", loading(Use::on));
    report("200 icons loaded with KeepGDIplusActive", loading(Use::kept));
    report("1,000 instances made and destroyed, one other alive", creating(false));
    report("1,000 instances made and destroyed, each alone", creating(true));
    platform::setGdiplusProvider([] { return platform::GdiplusApi(); });
    report("1,000 instances made and destroyed where there is no GDI+", creating(true));
}
// SPDX-License-Identifier: MIT
