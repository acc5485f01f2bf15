; Body file of the ImaAdpcm codec plug-in, read by the codec when the host
; loads it. NAME must be the codec's own name. SAMPLERATE_MIN/MAX bound the
; sample rate of the source waves it accepts. Each BITRATE<k> is a bit rate
; offered to users, WORKRATE<k> the rate in Hz the codec works at for it; drop
; lines (and lower BITRATECOUNT) to offer fewer.
[CODEC]
NAME=ImaAdpcm
SAMPLERATE_MIN=4000
SAMPLERATE_MAX=48000
BITRATECOUNT=3
BITRATE0=32000
WORKRATE0=8000
BITRATE1=24000
WORKRATE1=6000
BITRATE2=16000
WORKRATE2=4000
