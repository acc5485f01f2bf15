#include "codec/row_codec.h"

#include "codec/codec_pool.h"
#include "codec/codec_worker.h"
#include "host/codec_host.h"

#include <algorithm>
#include <thread>

namespace kestrelon {

namespace fs = std::filesystem;

int defaultCodecJobs()
{
    return std::max(1, int(std::thread::hardware_concurrency()));
}

std::unique_ptr<CodecRunner> makeRowCodec(const fs::path& programFolder, UserPort& port, MainHostWindow& mainWindow,
                                          RowCodecChoice choice)
{
    const std::optional<fs::path> program = codecWorkerProgram(programFolder);
    if (!program || choice.inProcess)
        return std::make_unique<CodecHost>(programFolder, port, mainWindow);
    auto own = std::make_unique<CodecWorker>(*program, programFolder, port, mainWindow);
    if (choice.jobs <= 1)
        return own;
    auto helper = [program = *program, programFolder](UserPort& helperPort, MainHostWindow& helperWindow) {
        return std::make_unique<CodecWorker>(program, programFolder, helperPort, helperWindow);
    };
    return std::make_unique<CodecPool>(std::move(own), port, std::move(helper), choice.jobs);
}

} // namespace kestrelon
