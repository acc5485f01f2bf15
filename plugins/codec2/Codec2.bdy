; Body file of the Codec2 codec plug-in, read by the codec when the host loads
; it. NAME must be the codec's own name. SAMPLERATE_MIN/MAX bound the sample
; rate of the source waves it accepts. Each BITRATE<k> is a bit rate offered to
; users (a mode of the codec library; "700" is its 700C mode), WORKRATE<k> the
; rate in Hz the codec works at for it. A mode the installed library was built
; without is not offered, even when listed here.
[CODEC]
NAME=Codec2
SAMPLERATE_MIN=4000
SAMPLERATE_MAX=48000
BITRATECOUNT=8
BITRATE0=3200
WORKRATE0=8000
BITRATE1=2400
WORKRATE1=8000
BITRATE2=1600
WORKRATE2=8000
BITRATE3=1400
WORKRATE3=8000
BITRATE4=1300
WORKRATE4=8000
BITRATE5=1200
WORKRATE5=8000
BITRATE6=700
WORKRATE6=8000
BITRATE7=450
WORKRATE7=8000
