#pragma once
// How close a decoded wave is to its source, in numbers a firmware engineer
// can set bit rates by. docs/quality.md defines them and lists what the
// reference codecs score.
//  - Segmental SNR (dB): for waveform codecs (PCM, mu-law, ADPCM), which try
//    to reproduce the samples themselves.
//  - Mel-band log-spectral distance (dB): the difference of the two sounds'
//    short-time spectra on a perceptual (mel) frequency scale, after the
//    decode is aligned to the source by the lag that matches them best; it
//    is meaningful for parametric codecs (Codec2, Speex) too, whose samples
//    do not follow the source's.
//  - The decode's duration against the source's.
#include <cstdint>
#include <vector>

namespace kestrelon {

// The lag (in samples, within +-maxLag) by which `decoded` lags `reference`:
// decoded[n + lag] matches reference[n] best, by normalised cross-correlation.
int bestLag(const std::vector<std::int16_t>& reference, const std::vector<std::int16_t>& decoded, int maxLag);

// Frames of 32 ms (a power of two in samples), half overlapping, Hann
// windowed; 24 triangular mel bands from 0 Hz to half the rate; per frame the
// root mean square over the bands of the difference of their levels in dB;
// the mean over frames whose reference is not silent (within 60 dB of the
// loudest frame). Signals are compared as given: align them first. 0 when the
// reference is silent throughout.
double melSpectralDistanceDb(const std::vector<std::int16_t>& reference, const std::vector<std::int16_t>& decoded,
                             int sampleRate);

struct QualityMeasures {
    double segmentalSnrDb = 0;
    double melDistanceDb = 0;
    double durationRatio = 0; // the decode's duration over the source's
    int lagSamples = 0; // the alignment removed before the spectral distance
};

// Measures a decode against its source, as a listener would hear it next to
// the original: a decode at another rate is first brought to the source's
// rate (with the codecs' own resampler), so the bandwidth a lower rate cannot
// carry counts as lost. Alignment looks up to 50 ms either way.
QualityMeasures measureQuality(const std::vector<std::int16_t>& source, int sourceRate,
                               const std::vector<std::int16_t>& decoded, int decodedRate);

} // namespace kestrelon
