#!/bin/sh
# Builds and runs all tests; arguments go to ctest, such as -R NAME for some of them.
# With --quick only what a change wants after every save: logic, widgets and companions without their long sweeps.
set -eu
root=$(CDPATH= cd -- "$(dirname -- "$0")" && pwd)
. "$root/Scripts/packages.sh"
need_packages $BUILD_PACKAGES $RUN_PACKAGES $FONT_PACKAGES $TEST_PACKAGES
# A folder configured before the test library was installed knows no tests yet.
if [ -f "$root/Build/release/build.ninja" ] && ! grep -q CoreTests "$root/Build/release/build.ninja"; then
	rm -f "$root/Build/release/CMakeCache.txt" "$root/Build/release/build.ninja"
fi
if [ "${1:-}" = --quick ]; then
	shift
	build_release "$root" LogicTests WidgetTests CompanionsTests
	set -- -R '^(LogicTests|WidgetTests|CompanionsTests)\.' \
		-E 'FileCacheTests|ModelTurn|CodeIndex|IgnoreRules|FileSearchFirstScan|StoreRecovery|AgentStoring' "$@"
else
	build_release "$root" all
fi
ctest --test-dir "$root/Build/release" --output-on-failure --no-tests=error -j 2 "$@"
