#include "waveform/wave_image.h"

#include "common/file_io.h"
#include "wave/wave_summary.h"
#include "wave/wave_viewport.h"
#include "waveform/wave_painter.h"

#include <QBuffer>
#include <QPainter>

namespace kestrelon {

QImage renderWaveImage(const WaveImageRequest& request)
{
    QImage image(request.width, request.height, QImage::Format_RGB32);
    const WaveSummary summary(request.samples);
    WaveViewport viewport;
    viewport.setSampleCount(std::int64_t(request.samples.size()));
    viewport.setWidth(waveArea(image.rect()).width());
    viewport.zoomTo(request.from, request.to);
    viewport.setCursor(request.from);

    WaveScene scene;
    scene.summary = &summary;
    scene.samples = request.samples;
    scene.sampleRate = request.sampleRate;
    scene.viewport = &viewport;
    scene.colors = request.colors;
    scene.events = request.events;
    QPainter painter(&image);
    paintWave(painter, image.rect(), scene);
    return image;
}

bool saveWaveImage(const QImage& image, const std::filesystem::path& target)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    if (!image.save(&buffer, "PNG"))
        return false;
    return writeFileAtomically(target, std::string_view(bytes.constData(), std::size_t(bytes.size())));
}

} // namespace kestrelon
