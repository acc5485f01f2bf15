#pragma once
// A test hook at every point where the program changes a file on disk (each
// whole-file write, each staged copy, each rename that makes one current),
// so that tests can end a run, or fill its disk, at each of them in turn and
// check that the project survives.
//
// Set by the environment variable KESTRELON_FAULT; unset, nothing happens:
//   kill@N  the process is killed on reaching the Nth point (counted from 1);
//   full@N  from the Nth point on, every write fails as on a full disk;
//   trace   each point is printed on standard error, numbered, with its file.
#include <filesystem>

namespace kestrelon {

enum class FaultPoint { Write, Rename };

// Reads KESTRELON_FAULT. Only a program calls it: the copies of this code
// linked into plug-ins stay off, so the points counted are the program's own.
void enableFaultPoints();

// True when the write at this point must fail as on a full disk; does not
// return when the run is to end here.
bool injectedFault(FaultPoint point, const std::filesystem::path& file);

} // namespace kestrelon
