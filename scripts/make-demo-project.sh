#!/usr/bin/env bash
# Builds a demo project with kestrelon-cli from the sample speech of Debian's
# codec2-examples: two folders of recordings, each encoded with a few of the
# reference codecs, and decoded.
set -euo pipefail
cli=$1
location=$2
speech=/usr/share/codec2/wav
mkdir -p "$location"
project="$location/Demo/Demo.ptp"

"$cli" project new "$location" Demo
"$cli" project add-folder "$project" Greetings
"$cli" project add-folder "$project" Prompts
"$cli" project add-files "$project" --folder Greetings "$speech/hts1a.wav" "$speech/hts2a.wav"
"$cli" project add-files "$project" --folder Prompts "$speech/big_dog.wav" "$speech/mmt1.wav"
"$cli" project add-files "$project" "$speech/wia_16kHz.wav"
"$cli" project add-encode "$project" --body "KS-1 Voice" --algo ImaAdpcm --rate 32000
"$cli" project add-encode "$project" --body "KS-1 Voice" --algo Codec2 --rate 2400 hts1a.wav big_dog.wav
"$cli" project add-encode "$project" --body "KS-1 Voice" --algo Speex --rate 8000 hts2a.wav wia_16kHz.wav
"$cli" project add-encode "$project" --body "KS-1 Voice" --algo MuLaw --rate 64000 mmt1.wav
"$cli" project decode "$project"
"$cli" project list "$project" --json > /dev/null
echo "Demo project: $project"
