#!/usr/bin/env bash
# Installs what is missing, builds, makes a demo project from Debian's sample
# speech (once), and starts the workbench on it. Without a display it runs the
# workbench under Xvfb just long enough to save a picture of it.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh
cmake --preset default
cmake --build --preset default --target kestrelon kestrelon-cli

bin=build/default/bin
demo=build/demo/Demo/Demo.ptp
if [ ! -f "$demo" ]; then
  scripts/make-demo-project.sh "$bin/kestrelon-cli" build/demo
fi

if [ -n "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ]; then
  exec "$bin/kestrelon" "$demo"
fi
echo "No display found: starting the workbench under Xvfb to take a picture of it."
picture=build/demo/workbench.png
xvfb-run -a -s "-screen 0 1400x900x24" bash -c '
  "$0" "$1" & pid=$!
  sleep 6
  import -window root "$2" 2>/dev/null || xwd -root -silent | convert xwd:- "$2"
  kill $pid' "$bin/kestrelon" "$demo" "$picture"
echo "Saved $picture"
