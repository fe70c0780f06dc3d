# Sourced by kill-test and fault-test: a project, a private store, and the program driven by scripts on a simulated clock, so that a
# session does the same calls in every run. Each run has a folder of its own: project, data (the store), memory (what is kept where the
# store cannot be), out (dumps and errors).

readonly SKIPPED=77
readonly MAX_START_SECONDS=2
readonly FIRST_CONVERSATION='create made/notes.md with "some text"'
readonly SECOND_CONVERSATION='what is in this project?'

# need_tracing TRACER: leaves with the code for a skipped test where nobody may trace.
need_tracing() {
	"$1" -- /bin/true && return
	[ $? = "$SKIPPED" ] && echo "skipped: programs cannot be traced here" && exit "$SKIPPED"
	echo "$1 does not work"
	exit 1
}

# make_project FOLDER: what the session works on.
make_project() {
	mkdir -p "$1/project/src" "$1/data" "$1/memory" "$1/out"
	printf 'one\ntwo\n' >"$1/project/run.sh"
	chmod 755 "$1/project/run.sh"
	printf 'int a;\r\n' >"$1/project/src/code.cpp"
	printf 'gone' >"$1/project/gone.txt"
}

# run_script FOLDER NAME [TRACER OPTION…]: runs FOLDER/NAME, with the tracer if there are options for it.
run_script() {
	local folder=$1 name=$2
	shift 2
	local tracer=()
	[ $# = 0 ] || tracer=("$TRACER" --below "$folder/project" --below "$folder/data" "$@" --)
	(cd "$folder/out" && XDG_DATA_HOME=$folder/data XDG_RUNTIME_DIR=$folder/memory timeout 120 "${tracer[@]}" "$PROGRAM" --headless \
		--project "$folder/project" --size 1280x1000 --now 2026-01-31T12:00:00 --script "$folder/$name" >>"$name.told" 2>&1)
}

# ask TEXT: the steps of one turn, from the typing to the dump NAME.
ask() {
	printf '%s\n' "click #InputTextBox" "key CTRL+A" "type $2" "key CTRL+ENTER" "tick 3" "dump $1-sent" "tick 60" "dump $1"
}

# pick TITLE NAME: the steps that open a conversation by the history box.
pick() {
	printf '%s\n' "click #ConversationComboBox" "tick 60" "click $1" "tick 60" "dump $2"
}

# list_messages DUMP: who says what, a line each, without what is told on the way, and without prompts that were refused.
list_messages() {
	[ -f "$1" ] || return 0
	awk '{ sub(/\r$/, "") } /^\t\t\t"type": "(User|AI)"/ { who = $2 } /^\t\t\t"type": "System"/ { who = "System" }
		/^\t\t\t"content": / {
			sub(/^\t\t\t"content": /, "")
			if (who == "System") { if (/^"Failed to send message/) prompt = "" }
			else if (who) { if (prompt) print prompt; prompt = who " " $0; if (who ~ /AI/) { print prompt; prompt = "" } }
			who = ""
		}
		END { if (prompt) print prompt }' "$1"
}

# check_file FOLDER NAME CONTENT…: the file has one of the contents; "-" stands for no file.
check_file() {
	local file=$1/project/$2 name=$2 is content
	shift 2
	is=$([ -e "$file" ] && od -An -c "$file" || echo -)
	for content in "$@"; do
		[ "$is" != "$([ "$content" = - ] && echo - || printf "$content" | od -An -c)" ] || return 0
	done
	echo "  $name is neither old nor new:"
	printf '%s\n' "$is"
	return 1
}

# restore_remains FOLDER: as they were before the last start. The project folder stays the same one.
restore_remains() {
	rm -rf "$1/data"
	mv "$1/again/data" "$1/data"
	find "$1/project" -mindepth 1 -delete
	cp -a "$1/again/project/." "$1/project/"
}

# check_start FOLDER [STEP…]: a start on what is left, to its dump, and the time of that in milliseconds ($took). A busy machine gets
# another try with the same remains.
check_start() {
	local folder=$1 try began
	shift
	printf '%s\n' "$@" "dump start" >"$folder/start"
	for try in 1 2 3; do
		rm -rf "$folder/again"
		mkdir "$folder/again"
		cp -a "$folder/data" "$folder/project" "$folder/again"
		began=$(date +%s%N)
		run_script "$folder" start || { echo "  the next start failed"; return 1; }
		took=$((($(stat -c %.9Y "$folder/out/start" | tr -d .) - began) / 1000000))
		[ "$took" -gt $((MAX_START_SECONDS * 1000)) ] || return 0
		restore_remains "$folder"
	done
	echo "  the next start took $took ms"
	return 1
}

# check_strays FOLDER: nothing but the session's own files in the project, nothing but the store and what is kept for undo beside it, and
# nothing elsewhere, since the last start has brought it home.
# What a program that died was about to make for undo (.new-…) is removed an hour later, since another one could be making it just now.
check_strays() {
	local strays
	strays=$(cd "$1/project" && find . -mindepth 1 ! -path ./src ! -path ./src/code.cpp ! -path ./run.sh ! -path ./gone.txt ! -path ./made ! -path ./made/notes.md)
	strays+=$(cd "$1/data" && find . -type f ! -path './Velmora/project-????????????????.db' ! -path './Velmora/project-????????????????.db-wal' ! -path './Velmora/project-????????????????.db-shm' ! \( -path './Velmora/project-????????????????.undo/*' ! -name '*.tmp' \))
	strays+=$(find "$1/memory" -mindepth 1)
	[ -z "$strays" ] || { echo "  left behind: $strays"; return 1; }
}

# choose COUNT SEED: that many of the lines of standard input, or with "all" each of them.
choose() {
	if [ "$1" = all ]; then
		cat
	else
		awk -v seed="$2" 'BEGIN { srand(seed) } { print rand() "\t" $0 }' | sort -n | head -n "$1" | cut -f 2-
	fi
}
