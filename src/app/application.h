#pragma once
// Start-up and shut-down of the workbench: one running copy per user, the
// body settings from the program folder, the frame shown maximised, the
// current volumes written back at exit.
namespace kestrelon {

// The whole program; returns its exit code. Arguments: an optional project
// file to open at start, and --settings-dir DIR to keep the settings in DIR
// instead of the user's profile (as kestrelon-cli does).
int runWorkbench(int argc, char** argv);

} // namespace kestrelon
