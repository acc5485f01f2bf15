#pragma once
// A JSON array too large to hold as a tree (the rows or the Files tree of a
// project of thousands of sources): each element is written out as it is
// made, to a spool file, and the answer is printed around it. The printed
// text is exactly what the array would print as a field of the answer.
#include "cli/cli_command.h"

#include <cstdio>
#include <memory>
#include <ostream>

namespace kestrelon::cli {

class SpooledArray {
public:
    SpooledArray();
    void add(const Json& element);
    // The array's text at the depth of a field of the answer.
    void writeTo(std::ostream& out) const;

private:
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> m_file;
    std::size_t m_count = 0;
};

// Makes `array` the answer's field `key`, printed where the field stands.
void setSpooledField(Result& result, const std::string& key, std::shared_ptr<SpooledArray> array);
// Prints the answer: its fields, with every spooled array in its place.
void printAnswer(std::ostream& out, const Json& answer, const Result& result);

} // namespace kestrelon::cli
