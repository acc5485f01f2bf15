#include "cli/commands.h"

#include "codec/raw_extraction.h"
#include "common/paths.h"

namespace kestrelon::cli {

namespace {

Json headerJson(const EncodedFileInfo& info)
{
    const EncodedHeaderFields& header = info.header;
    return Json{
        {"version", header.version},        {"formatCode", header.formatCode}, {"signature", header.signature},
        {"field22", header.field22},        {"field24", header.field24},       {"sampleRate", header.sampleRate},
        {"field30", header.field30},        {"field34", header.field34},       {"field36", header.field36},
        {"dataOffset", kEncodedHeaderSize}, {"dataSize", info.dataSize()},
    };
}

Result runHeader(Context& context)
{
    const std::vector<std::string> words = context.args.expect(1);
    const std::optional<EncodedFileInfo> info = inspectEncodedFile(pathFromUtf8(words[0]), context.port);
    if (!info)
        return Result{false};
    return Result{true, headerJson(*info)};
}

} // namespace

void addHeaderCommands(std::vector<CommandSpec>& table)
{
    table.push_back({{"header"}, "header FILE", runHeader, true});
}

} // namespace kestrelon::cli
