#!/usr/bin/env bash
# Builds the Debian package from a finished build, unpacks it into a scratch
# root and uses it as an installed program would be used: the road of one file
# with the unpacked kestrelon-cli against its unpacked program folder, the
# desktop files validated, and volumes kept in the user's copy while the
# read-only program folder keeps its bytes.
# Usage: package_test.sh BUILD-DIR
set -euo pipefail
build=$(cd "$1" && pwd)
scratch=$(mktemp -d)
trap 'chmod -R u+w "$scratch" 2>/dev/null; rm -rf "$scratch"' EXIT
chmod 755 "$scratch"
failures=0
check() { # check WHAT COMMAND...: runs the command, counts a failure
  local what=$1; shift
  if "$@"; then echo "ok: $what"; else echo "FAILED: $what"; failures=$((failures + 1)); fi
}

(cd "$build" && cpack -G DEB -B "$scratch/pkg" >"$scratch/cpack.log" 2>&1) || { cat "$scratch/cpack.log"; exit 1; }
deb=$(ls "$scratch"/pkg/kestrelon_*.deb)
dpkg-deb -x "$deb" "$scratch/root"
depends=$(dpkg-deb -f "$deb" Depends)
check "dependencies are computed from the binaries (Qt, libsndfile, the codecs' libraries)" \
  grep -q 'libqt6widgets6.*libsndfile1\|libsndfile1.*libqt6widgets6' <<<"$depends"

program="$scratch/root/usr/lib/kestrelon"
cli="$scratch/root/usr/bin/kestrelon-cli"
export XDG_CONFIG_HOME="$scratch/config" HOME="$scratch/home" QT_QPA_PLATFORM=offscreen
mkdir -p "$XDG_CONFIG_HOME" "$HOME"
check "the link in bin runs the program" test "$("$cli" --version)" = "kestrelon-cli $(dpkg-deb -f "$deb" Version)"
check "the workbench answers --version" test -n "$("$scratch/root/usr/bin/kestrelon" --version 2>/dev/null)"
bodies_file=$("$cli" bodies | sed -n 's/^  "file": "\(.*\)",$/\1/p')
check "the program folder is the real executable's folder" test "$bodies_file" = "$program/KestrelonBodySetting.dat"
check "the manual pages are there" test -s "$scratch/root/usr/share/man/man1/kestrelon-cli.1.gz"

# The road of one file.
sox -q -t raw -r 8000 -e signed -b 16 -c 1 /usr/share/codec2/raw/hts1a.raw "$scratch/hello.wav"
mkdir -p "$scratch/work"
ptp="$scratch/work/Road/Road.ptp"
check "project new" "$cli" project new "$scratch/work" Road
check "project add-files" "$cli" project add-files "$ptp" "$scratch/hello.wav"
check "project add-encode" "$cli" project add-encode "$ptp" --body "KS-1 Voice" --algo ImaAdpcm --rate 32000
check "project decode" "$cli" project decode "$ptp"
check "project export" "$cli" project export "$ptp" --out "$scratch/out"
check "the export holds the index and the encoded file" \
  test -s "$scratch/out/All_Export_FileName.txt" -a "$(ls "$scratch/out" | grep -c '^hello_KS-1 Voice_ImaAdpcm_32000')" -eq 1
list=$("$cli" --json project list "$ptp" || true)
check "the row was decoded" grep -q '"decodeSize": "[1-9]' <<<"$list"

check "desktop entry" desktop-file-validate "$scratch/root/usr/share/applications/kestrelon.desktop"
check "AppStream metadata" appstreamcli validate --no-net "$scratch"/root/usr/share/metainfo/*.metainfo.xml
check "project file type" grep -q 'pattern="\*.ptp"' "$scratch/root/usr/share/mime/packages/kestrelon.xml"

# An installed program folder is read-only to its user.
before=$(sha1sum <"$program/KestrelonBodySetting.dat")
chmod -R a-w "$program"
as_user=()
if [ "$(id -u)" -eq 0 ]; then # root writes anywhere: run as an ordinary user
  chown -R nobody "$XDG_CONFIG_HOME"
  as_user=(setpriv --reuid=nobody --regid=nogroup --clear-groups)
fi
check "a volume change in a read-only program folder succeeds" \
  "${as_user[@]}" env XDG_CONFIG_HOME="$XDG_CONFIG_HOME" "$cli" bodies set-volume "KS-1 Voice" 3
check "the shipped body settings keep their bytes" test "$(sha1sum <"$program/KestrelonBodySetting.dat")" = "$before"
check "the user's copy holds the volume" grep -q '^CURRENT_VOL=3' "$XDG_CONFIG_HOME/Corvane/KestrelonBodySetting.dat"
check "and is what the program reads from then on" \
  grep -q "\"file\": \"$XDG_CONFIG_HOME/Corvane/KestrelonBodySetting.dat\"" <<<"$("${as_user[@]}" env XDG_CONFIG_HOME="$XDG_CONFIG_HOME" "$cli" bodies)"

[ "$failures" -eq 0 ]
