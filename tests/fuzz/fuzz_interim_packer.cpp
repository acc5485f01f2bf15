// Arbitrary bytes as an interim file. Unpacking must refuse or succeed without
// crashing, a refusal must write nothing, and whatever is accepted must come
// back unchanged through a second pack and unpack.
#include "codec/interim_packer.h"
#include "common/file_io.h"

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <string>
#include <string_view>

namespace {

// One scratch folder per fuzzing process, removed when the process ends.
struct WorkFolder {
    std::filesystem::path path;
    WorkFolder()
    {
        std::random_device random;
        path = std::filesystem::temp_directory_path() /
               ("kestrelon-fuzz-interim-" + std::to_string(random()) + std::to_string(random()));
        std::filesystem::create_directories(path);
    }
    ~WorkFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }
};

std::string readAll(const std::filesystem::path& path)
{
    kestrelon::ReadResult result = kestrelon::readFile(path, kestrelon::kMaxInterimOriginalBytes);
    if (result.status != kestrelon::ReadStatus::Ok)
        std::abort();
    return std::move(result.bytes);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const WorkFolder folder;
    const auto input = folder.path / "input.tmp";
    const auto unpacked = folder.path / "unpacked.raw";
    const auto repacked = folder.path / "repacked.tmp";
    const auto again = folder.path / "again.raw";

    if (!kestrelon::writeFileAtomically(input, std::string_view(reinterpret_cast<const char*>(data), size)))
        std::abort();
    std::error_code ignored;
    std::filesystem::remove(unpacked, ignored);

    if (!kestrelon::DecryptUnzip(input, unpacked)) {
        if (std::filesystem::exists(unpacked))
            std::abort(); // a refusal left something behind
        return 0;
    }
    const std::string first = readAll(unpacked);
    if (!kestrelon::EncryptZip(unpacked, repacked) || !kestrelon::DecryptUnzip(repacked, again))
        std::abort();
    if (readAll(again) != first)
        std::abort();
    return 0;
}
