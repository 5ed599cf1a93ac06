#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Draws the test pictures anew, writes down what loading each of them gives (tests/data/ledger.txt) and which bytes are
# saved (tests/data/written.txt) and what drawing gives (tests/data/drawn.txt), and shows what changed.
# The ledger is only as right as whoever looks at the difference: tests/oracle compares the same files with other programs.
set -euo pipefail
cd "$(dirname "$0")/.."
python3 scripts/draw_test_pictures.py
. scripts/compiler_cache.sh
cmake --preset release >/dev/null
cmake --build --preset release --target pixkit-tests
PIXKIT_WRITE_LEDGER=yes build/release/tests/pixkit-tests --gtest_filter='Ledger.APicture*:WrittenLedger.*:DrawnLedger.*' --gtest_brief=1
git --no-pager diff --stat -- tests/data
git --no-pager diff -U0 -- tests/data/ledger.txt tests/data/written.txt tests/data/drawn.txt
