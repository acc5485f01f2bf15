; Body file of the MuLaw codec plug-in, read by the codec when the host loads
; it. NAME must be the codec's own name. SAMPLERATE_MIN/MAX bound the sample
; rate of the source waves it accepts. Each BITRATE<k> is a bit rate offered to
; users, WORKRATE<k> the rate in Hz the codec works at for it.
[CODEC]
NAME=MuLaw
SAMPLERATE_MIN=4000
SAMPLERATE_MAX=48000
BITRATECOUNT=2
BITRATE0=64000
WORKRATE0=8000
BITRATE1=48000
WORKRATE1=6000
