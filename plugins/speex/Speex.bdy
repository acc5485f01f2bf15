; Body file of the Speex codec plug-in, read by the codec when the host loads
; it. NAME must be the codec's own name. SAMPLERATE_MIN/MAX bound the sample
; rate of the source waves it accepts. Each BITRATE<k> is a bit rate offered to
; users (one narrowband mode each), WORKRATE<k> the rate in Hz the codec works
; at for it.
[CODEC]
NAME=Speex
SAMPLERATE_MIN=4000
SAMPLERATE_MAX=48000
BITRATECOUNT=8
BITRATE0=2150
WORKRATE0=8000
BITRATE1=3950
WORKRATE1=8000
BITRATE2=5950
WORKRATE2=8000
BITRATE3=8000
WORKRATE3=8000
BITRATE4=11000
WORKRATE4=8000
BITRATE5=15000
WORKRATE5=8000
BITRATE6=18200
WORKRATE6=8000
BITRATE7=24600
WORKRATE7=8000
