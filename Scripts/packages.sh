# Sourced by run.sh and test.sh: makes sure that Debian packages are there.

BUILD_PACKAGES="g++ cmake ninja-build pkg-config libsdl2-dev libcairo2-dev libpango1.0-dev libx11-dev rapidjson-dev libsqlite3-dev libcurl4-openssl-dev libglib2.0-dev libatk1.0-dev libatk-bridge2.0-dev"
RUN_PACKAGES="universal-ctags bubblewrap"
FONT_PACKAGES="fontconfig fonts-roboto-unhinted fonts-noto-mono fonts-noto-color-emoji"
# What is of use and not needed: the fonts of more scripts, the programs that open files and links, the service of screen readers.
OPTIONAL_PACKAGES="fonts-noto-core fonts-noto-cjk xdg-utils bash-completion libsecret-1-0 at-spi2-core"
TEST_PACKAGES="libgtest-dev fonts-dejavu-core fonts-droid-fallback python3 openssl strace dbus libsecret-1-0 gnome-keyring at-spi2-core python3-pyatspi dbus-daemon"

# Installs what is missing of the packages named. Ends the script with 3 when nobody may install.
need_packages() {
	missing=""
	for package in "$@"; do
		if ! dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null | grep -q '^installed$'; then
			missing="$missing $package"
		fi
	done
	[ -n "$missing" ] || return 0
	command="apt-get install -y --no-install-recommends$missing"
	if [ "$(id -u)" = 0 ]; then
		prefix=""
	elif command -v sudo >/dev/null 2>&1; then
		prefix="sudo"
	else
		echo "These packages are missing and only root may install them. Run:" >&2
		echo "  apt-get update && $command" >&2
		exit 3
	fi
	echo "Installing missing packages:$missing" >&2
	$prefix apt-get update >&2 || true
	$prefix env DEBIAN_FRONTEND=noninteractive $command >&2 || {
		echo "The packages could not be installed. Run: $prefix $command" >&2
		exit 3
	}
}

# Configures and builds the targets named; says something only when there is something to do or to mend.
build_release() {
	root=$1
	shift
	folder=$root/Build/release
	if [ ! -f "$folder/build.ninja" ]; then
		echo "Building Velmora UI for the first time; this takes some minutes." >&2
		mkdir -p "$folder"
		(cd "$root" && cmake --preset release ${VELMORA_CMAKE_FLAGS:-} >"$folder/configure.log" 2>&1) || {
			cat "$folder/configure.log" >&2
			exit 1
		}
	fi
	if ! cmake --build "$folder" --target "$@" >"$folder/build.log" 2>&1; then
		grep -E 'error|Error|undefined|FAILED' "$folder/build.log" >&2 || tail -n 30 "$folder/build.log" >&2
		echo "The build failed; the whole log is $folder/build.log" >&2
		exit 1
	fi
}
