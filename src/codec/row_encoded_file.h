#pragma once
// The encoded file behind a row of the main list, found and read without
// touching the disk: "Encode Info" shows what a firmware build would get from
// it, and export unpacks it from the same place.
#include "codec/raw_extraction.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace kestrelon {

class ProjectSession;
class UserPort;
struct EditInfoRecord;

// Where a row's interim file is: the working copy in Temp, or, when the
// project was closed since it was encoded (closing moves Temp\*.tmp into the
// project folder), the copy in the project folder. Empty when neither exists.
std::filesystem::path findInterimFile(const ProjectSession& session, const std::string& interimName);

struct RowEncodedFile {
    std::filesystem::path interimFile; // the packed file that was read
    std::uintmax_t packedSize = 0; // its size on disk
    EncodedFileInfo encoded; // the unpacked encoded file: header and size
    std::string speech; // its data after the header: what a board or a firmware build gets
};

// What stands between a row and its encoded data.
enum class EncodedFileProblem { None, NotEncoded, Missing, Damaged, NoHeader };

struct RowEncodedRead {
    EncodedFileProblem problem = EncodedFileProblem::None;
    std::optional<RowEncodedFile> file; // set exactly when there is no problem
};

// Finds and unpacks the row's interim file in memory and reads its header.
RowEncodedRead readRowEncodedFile(const ProjectSession& session, const EditInfoRecord& record);

// The message of a problem, as Encode Info and export show it.
std::string encodedFileProblemText(EncodedFileProblem problem, const EditInfoRecord& record);

// readRowEncodedFile with the problem shown: a row never encoded shows "This item has not been encoded yet !"; a missing
// interim file its name followed by " does not exist in the project folder !";
// a damaged one its name followed by " could not be unpacked: it is damaged !";
// unpacked data without a valid header the quoted name followed by
// " is not a correct encoded file !". Each of these gives nullopt.
std::optional<RowEncodedFile> inspectRowEncodedFile(const ProjectSession& session, const EditInfoRecord& record,
                                                    UserPort& port);

} // namespace kestrelon
