# What the scripts that drive the real program from outside share: a screen of their own with a
# window manager, a home of their own, and hands for keyboard and mouse. To be sourced with the
# folder of the programs in `bin`.
unset QT_QPA_PLATFORM WAYLAND_DISPLAY
folder=$(mktemp -d)
started=()
cleanup() {
  for ((i = ${#started[@]} - 1; i >= 0; i--)); do
    kill -9 "${started[i]}" 2>/dev/null || true
    wait "${started[i]}" 2>/dev/null || true
  done
  rm -rf "$folder"
}
trap cleanup EXIT
fail() {
  echo "failed: $*" >&2
  cat "$folder/output" >&2
  if [ -n "${CORVANE_SCREENSHOTS:-}" ]; then import -window root "$CORVANE_SCREENSHOTS/failed.png"; fi
  exit 1
}
# Runs a command again and again until it succeeds.
eventually() {
  local what=$1
  shift
  local end=$((SECONDS + 20))
  while [ $SECONDS -lt $end ]; do
    if "$@" >/dev/null 2>&1; then return 0; fi
    sleep 0.1
  done
  fail "$what"
}
start() { # starts a program and leaves its number in `pid`
  "$@" </dev/null >>"$folder/output" 2>&1 &
  pid=$!
  started+=("$pid")
}

crash() { # a program that was started here
  kill -9 "$1"
  wait "$1" 2>/dev/null || true
}

newHome() {
  export HOME=$folder/$1
  unset XDG_CONFIG_HOME XDG_DATA_HOME XDG_STATE_HOME XDG_CACHE_HOME
  export XDG_RUNTIME_DIR=$HOME/run CORVANE_BENCH_DIR=$HOME/bench
  mkdir -p "$HOME/.config"
  mkdir -m 700 "$XDG_RUNTIME_DIR" "$CORVANE_BENCH_DIR"
}
openScreen() { # of this size
  mkfifo "$folder/display"
  Xvfb -displayfd 3 -screen 0 "$1x24" -nolisten tcp 3>"$folder/display" >/dev/null 2>&1 &
  started+=($!)
  read -r number <"$folder/display"
  export DISPLAY=:$number
  start openbox
  eventually "the window manager does not start" xdotool get_desktop
}

isShown() { xdotool search --onlyvisible --name "$1"; }
# The window with such a title, once it is there; in `window`.
awaitWindow() {
  eventually "there is no window '$1'" isInFront "$1"
}
isInFront() { # one that goes meanwhile is not
  window=$(xdotool search --onlyvisible --name "$1" | tail -1)
  [ -n "$window" ] && xdotool windowactivate --sync "$window"
}
isTitle() { [[ $(xdotool getwindowname "$window") == $1 ]]; }
awaitTitle() { eventually "the window's title is not $1 but $(xdotool getwindowname "$window")" isTitle "$1"; }
isGone() { ! kill -0 "$1"; }
clickAt() { # x, y in the window, and how often
  xdotool mousemove --window "$window" "$1" "$2" click --repeat "${3:-1}" --delay 60 1
  sleep 0.2
}
key() {
  xdotool key --delay 40 "$@"
  sleep 0.2
}
typeText() {
  xdotool type --delay 30 "$1"
  sleep 0.1
}
