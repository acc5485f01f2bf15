#pragma once
// Hands a file to the user's external sound editor and waits for the editor to
// end, keeping the program's windows painting meanwhile, then brings `window`
// back to the front.
#include <filesystem>

class QWidget;

namespace kestrelon {

// The editor gets the file path as its one argument, whatever blanks it
// holds. False when the editor could not be started.
bool runExternalEditor(const std::filesystem::path& editor, const std::filesystem::path& file, QWidget* window);

} // namespace kestrelon
