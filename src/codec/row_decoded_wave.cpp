#include "codec/row_decoded_wave.h"

#include "codec/interim_packer.h"
#include "codec/row_encoded_file.h"
#include "codec/temp_names.h"
#include "common/messages.h"
#include "common/paths.h"
#include "common/user_port.h"
#include "project/edit_info_record.h"

#include <system_error>

namespace kestrelon {

namespace fs = std::filesystem;

fs::path unpackDecodedWave(const ProjectSession& session, const EditInfoRecord& record, const fs::path& folder,
                           UserPort& port)
{
    if (record.decodeName.empty()) {
        port.showMessage(msg::kNothingDecodedToPlay);
        return {};
    }
    const fs::path packed =
        isPlainFileName(record.decodeName) ? findInterimFile(session, record.decodeName) : fs::path();
    if (packed.empty()) {
        port.showMessage(msg::kDecodedTempNotFound);
        return {};
    }
    std::error_code ec;
    fs::create_directories(folder, ec);
    const fs::path wave = folder / pathFromUtf8(fileStem(record.decodeName) + ".wav");
    std::string writeError;
    if (!DecryptUnzip(packed, wave, &writeError)) {
        port.showMessage(interimFailureText(record.decodeName, false, writeError));
        return {};
    }
    return wave;
}

} // namespace kestrelon
