#!/usr/bin/env bash
# Installs what is missing, builds, and shows Kestrelon at work on the sample
# project that ships in samples/.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh
cmake --preset default
cmake --build --preset default
cli=build/default/bin/kestrelon-cli
"$cli" project dump samples/demo/demo.ptp --drop-missing
"$cli" bodies samples/KestrelonBodySetting.dat
