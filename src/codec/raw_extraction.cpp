#include "codec/raw_extraction.h"

#include "common/file_io.h"
#include "common/messages.h"
#include "common/paths.h"
#include "common/user_port.h"

#include <fstream>
#include <string>
#include <system_error>

namespace kestrelon {

namespace {

void showNotEncoded(const std::filesystem::path& path, UserPort& port)
{
    port.showMessage(utf8FromPath(path.filename()) + std::string(msg::kNotACorrectEncodedFile));
}

} // namespace

bool extractRawEncodedData(const std::filesystem::path& unpackedPath, const std::filesystem::path& targetPath,
                           UserPort& port)
{
    const ReadResult read = readFile(unpackedPath, kMaxEncodedFileBytes);
    if (read.status != ReadStatus::Ok || !hasEncodedMagic(read.bytes) || read.bytes.size() < kEncodedHeaderSize) {
        showNotEncoded(unpackedPath, port);
        return false;
    }
    return writeFileAtomically(targetPath, std::string_view(read.bytes).substr(kEncodedHeaderSize));
}

std::optional<EncodedFileInfo> inspectEncodedFile(const std::filesystem::path& path, UserPort& port)
{
    std::error_code ec;
    EncodedFileInfo info;
    std::string head(kEncodedHeaderSize, '\0');
    bool readable = std::filesystem::is_regular_file(path, ec);
    if (readable) {
        info.fileSize = std::filesystem::file_size(path, ec);
        std::ifstream in(path, std::ios::binary);
        readable = !ec && in && in.read(head.data(), static_cast<std::streamsize>(head.size()));
    }
    const std::optional<EncodedHeaderFields> header = readable ? parseEncodedHeader(head) : std::nullopt;
    if (!header || info.fileSize < kEncodedHeaderSize) {
        showNotEncoded(path, port);
        return std::nullopt;
    }
    info.header = *header;
    return info;
}

} // namespace kestrelon
