#include "cli/spooled_array.h"

#include <map>
#include <stdexcept>

namespace kestrelon::cli {

namespace {

constexpr int kIndent = 2;
// Elements of a field's array stand two levels deep in the answer.
const std::string kElementIndent(2 * kIndent, ' ');

// What stands in a field's place until the answer is printed; no text a
// project holds has this form.
std::string placeholder(const std::string& key)
{
    return "\x01spooled:" + key;
}

std::string dumped(const Json& value)
{
    // Names in project data are 8-bit text in whatever code page wrote them;
    // bytes that are not UTF-8 print as U+FFFD instead of failing.
    return value.dump(kIndent, ' ', false, Json::error_handler_t::replace);
}

} // namespace

SpooledArray::SpooledArray()
    : m_file(std::tmpfile(), &std::fclose)
{
    if (!m_file)
        throw std::runtime_error("no room for a temporary file to hold the answer");
}

void SpooledArray::add(const Json& element)
{
    std::string text = m_count++ == 0 ? "\n" : ",\n";
    const std::string lines = dumped(element);
    std::size_t start = 0;
    while (start <= lines.size()) {
        const std::size_t end = lines.find('\n', start);
        text += kElementIndent + lines.substr(start, end == std::string::npos ? std::string::npos : end + 1 - start);
        if (end == std::string::npos)
            break;
        start = end + 1;
    }
    if (std::fwrite(text.data(), 1, text.size(), m_file.get()) != text.size())
        throw std::runtime_error("the answer could not be written to its temporary file");
}

void SpooledArray::writeTo(std::ostream& out) const
{
    if (m_count == 0) {
        out << "[]";
        return;
    }
    out << '[';
    std::rewind(m_file.get());
    char buffer[1 << 16];
    for (std::size_t got; (got = std::fread(buffer, 1, sizeof buffer, m_file.get())) > 0;)
        out.write(buffer, std::streamsize(got));
    out << '\n' << std::string(kIndent, ' ') << ']';
}

void setSpooledField(Result& result, const std::string& key, std::shared_ptr<SpooledArray> array)
{
    result.fields[key] = placeholder(key);
    result.spooled[key] = std::move(array);
}

void printAnswer(std::ostream& out, const Json& answer, const Result& result)
{
    const std::string text = dumped(answer);
    // Where each spooled field stands, in the order the answer prints them.
    std::map<std::size_t, std::pair<std::size_t, const SpooledArray*>> places;
    for (const auto& [key, array] : result.spooled) {
        const std::string quoted = dumped(Json(placeholder(key)));
        if (const std::size_t at = text.find(quoted); at != std::string::npos)
            places[at] = {quoted.size(), array.get()};
    }
    std::size_t from = 0;
    for (const auto& [at, place] : places) {
        out.write(text.data() + from, std::streamsize(at - from));
        place.second->writeTo(out);
        from = at + place.first;
    }
    out.write(text.data() + from, std::streamsize(text.size() - from));
    out << '\n';
}

} // namespace kestrelon::cli
