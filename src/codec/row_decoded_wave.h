#pragma once
// A row's decoded wave as a file to play or show: unpacked from its interim
// file into a scratch folder the caller owns.
#include <filesystem>

namespace kestrelon {

class ProjectSession;
class UserPort;
struct EditInfoRecord;

// Unpacks the decoded wave into `folder` (made when missing) as <stem>.wav.
// A row not decoded, an interim file that is missing and one that will not
// unpack are each shown through `port`; the result is then empty.
std::filesystem::path unpackDecodedWave(const ProjectSession& session, const EditInfoRecord& record,
                                        const std::filesystem::path& folder, UserPort& port);

} // namespace kestrelon
