#!/bin/sh
# Drives the real program under Xvfb as a person would, with keys sent by
# xdotool to its window: open Kung Fu Man from the command line, ask for the
# open dialog, step through the sounds and play one, try the project in an
# engine (a fake one of ours), and close it, first unmodified, then modified.
#
#   drive_kfm.sh BUILD_DIR CORPUS_DIR [PICTURES_DIR]
#
# Exits 77 (skipped) without Xvfb, xdotool or the corpus. With ImageMagick's
# `import`, it leaves a picture of each step in PICTURES_DIR to look at.
set -u

build=$1
corpus=$2
pictures=${3:-}
kfm="$corpus/elecbyte-mugen10/chars/kfm/kfm.def"

for tool in Xvfb xdotool; do
    command -v "$tool" >/dev/null 2>&1 || { echo "skipped: no $tool"; exit 77; }
done
[ -f "$kfm" ] || { echo "skipped: no corpus"; exit 77; }

work=$(mktemp -d)
display=""
program=""
cleanup() {
    [ -n "$program" ] && kill "$program" 2>/dev/null
    [ -n "$display" ] && kill "$xvfb" 2>/dev/null
    rm -rf "$work"
}
trap cleanup EXIT

fail() {
    echo "FAIL: $*"
    picture "failure"
    exit 1
}

# A program folder of its own: the program keeps its configuration, key
# bindings and history beside itself, and the data is only read.
mkdir -p "$work/program" "$work/engine" "$work/tmp" "$work/runtime"
chmod 700 "$work/runtime"
cp "$build/bin/kestrada" "$work/program/"
# The bindings as shipped: the build folder keeps whatever a run there saved.
cp "$(dirname "$0")/../../data/shortcuts.xml" "$work/program/"
for data in colorsets docs iconsets languages presets styles syntax_mugen.xml; do
    ln -s "$build/bin/$data" "$work/program/$data"
done
cp "$build/tests/fakeengine" "$work/engine/engine"
cat > "$work/program/config.xml" <<XML
<!DOCTYPE ZNLConfigML>
<configuration>
    <config name="window_left" value="0"/>
    <config name="window_top" value="0"/>
    <config name="window_width" value="1280"/>
    <config name="window_height" value="800"/>
    <config name="confirm_close" value="0"/>
    <config name="backup_onload" value="0"/>
    <config name="mugen_0_name" value="Fake engine"/>
    <config name="mugen_0_exe" value="$work/engine/engine"/>
    <config name="mugen_0_params" value="%0 %0"/>
</configuration>
XML

# Private temporary and runtime folders: no other instance on this machine
# can take the files handed over.
export TMPDIR="$work/tmp" XDG_RUNTIME_DIR="$work/runtime"
# A real window on the X server, whatever the test runner asks of Qt.
export QT_QPA_PLATFORM=xcb
unset QT_SCALE_FACTOR
export FAKE_ENGINE_LOG="$work/engine.log" FAKE_ENGINE_SLEEP_MS=500

for n in $(seq 90 130); do
    [ -e "/tmp/.X$n-lock" ] && continue
    Xvfb ":$n" -screen 0 1280x800x24 -nolisten tcp >/dev/null 2>&1 &
    xvfb=$!
    sleep 1
    if kill -0 "$xvfb" 2>/dev/null; then
        display=":$n"
        break
    fi
done
[ -n "$display" ] || fail "no display for Xvfb"
export DISPLAY="$display"

step=0
picture() {
    [ -n "$pictures" ] && command -v import >/dev/null 2>&1 || return 0
    step=$((step + 1))
    mkdir -p "$pictures"
    import -window root "$pictures/$(printf %02d "$step")-$1.png" 2>/dev/null
}

# waitfor NAME [SECONDS]: the id of the first window titled NAME.
waitfor() {
    tries=$((${2:-10} * 5))
    while [ "$tries" -gt 0 ]; do
        id=$(xdotool search --onlyvisible --name "^$1\$" 2>/dev/null | head -1)
        [ -n "$id" ] && { echo "$id"; return 0; }
        sleep 0.2
        tries=$((tries - 1))
    done
    return 1
}

# gone NAME [SECONDS]: true once no window titled NAME is shown.
gone() {
    tries=$((${2:-10} * 5))
    while [ "$tries" -gt 0 ]; do
        xdotool search --onlyvisible --name "^$1\$" >/dev/null 2>&1 || return 0
        sleep 0.2
        tries=$((tries - 1))
    done
    return 1
}

# keys WINDOW KEY...: focus the window, then type the keys.
keys() {
    target=$1
    shift
    xdotool windowfocus --sync "$target" 2>/dev/null
    xdotool key --delay 120 "$@"
    sleep 0.4
}

start() {
    "$work/program/kestrada" "$@" >"$work/program.log" 2>&1 &
    program=$!
    window=$(waitfor "Kung Fu Man - Kestrada" 30) || fail "no window titled \"Kung Fu Man - Kestrada\""
}

# The program ends within SECONDS, by itself.
ends() {
    tries=$(($1 * 5))
    while [ "$tries" -gt 0 ]; do
        kill -0 "$program" 2>/dev/null || { wait "$program"; program=""; return 0; }
        sleep 0.2
        tries=$((tries - 1))
    done
    return 1
}

# 1. Kung Fu Man from the command line: its tab names the window.
start "$kfm"
sleep 1
picture "opened"

# 2. Ctrl+O asks for a project to open; Escape cancels it.
keys "$window" ctrl+o
dialog=$(waitfor "Open project") || fail "Ctrl+O showed no \"Open project\""
picture "open-dialog"
keys "$dialog" Escape
gone "Open project" || fail "the open dialog stayed"

# 3. Through the sounds, one at a time, and the last one played.
keys "$window" Right Right Right Right Right Right Right Right Right Right Right
picture "last-sound"
keys "$window" space
picture "playing"
sleep 2

# 4. F9 tries the project in the only engine configured, then removes the copy.
keys "$window" F9
tries=50
while [ ! -s "$FAKE_ENGINE_LOG" ] && [ "$tries" -gt 0 ]; do sleep 0.2; tries=$((tries - 1)); done
[ -s "$FAKE_ENGINE_LOG" ] || fail "F9 started no engine"
grep -qx "arg ks3_0" "$FAKE_ENGINE_LOG" || fail "the engine was given $(grep '^arg' "$FAKE_ENGINE_LOG")"
grep -qx "file chars/ks3_0/ks3_0.def" "$FAKE_ENGINE_LOG" || fail "the engine found no copy of the project"
tries=50
while [ -e "$work/engine/chars/ks3_0" ] && [ "$tries" -gt 0 ]; do sleep 0.2; tries=$((tries - 1)); done
[ ! -e "$work/engine/chars/ks3_0" ] || fail "the copy stayed in the engine's folder"
picture "after-run"

# 5. Closing an unmodified project asks nothing.
keys "$window" ctrl+q
ends 10 || fail "the window didn't close, or asked something, with nothing modified"

# 6. A sound deleted, then closing asks to discard the change; No keeps it open.
start "$kfm"
keys "$window" Delete
question=$(waitfor "Delete") || fail "Delete asked nothing"
keys "$question" y
gone "Delete" || fail "the delete question stayed"
keys "$window" ctrl+q
question=$(waitfor "Discard changes") || fail "closing a modified project asked nothing"
picture "discard-question"
keys "$question" n
gone "Discard changes" || fail "the discard question stayed"
kill -0 "$program" 2>/dev/null || fail "No to discarding closed the window"
keys "$window" ctrl+q
question=$(waitfor "Discard changes") || fail "closing again asked nothing"
keys "$question" y
ends 10 || fail "Yes to discarding didn't close the window"

echo "PASS"
