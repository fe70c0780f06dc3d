#!/bin/sh
# Builds what is needed and starts the program; all arguments go to it. See --help.
set -eu
root=$(CDPATH= cd -- "$(dirname -- "$0")" && pwd)
. "$root/Scripts/packages.sh"
need_packages $BUILD_PACKAGES $RUN_PACKAGES $FONT_PACKAGES
build_release "$root" velmora VelmoraUI
exec "$root/Build/release/bin/velmora" "$@"
