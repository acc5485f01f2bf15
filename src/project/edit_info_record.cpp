#include "project/edit_info_record.h"

#include "project/number_text.h"

namespace kestrelon {

bool EditInfoRecord::sameRow(const EditInfoRecord& other) const
{
    return fileName == other.fileName && bodyName == other.bodyName && algoName == other.algoName &&
           bitRate == other.bitRate;
}

std::int64_t EditInfoRecord::encodeSizeValue() const
{
    return sizeFromText(encodeSize);
}

std::int64_t EditInfoRecord::decodeSizeValue() const
{
    return sizeFromText(decodeSize);
}

std::int64_t sizeFromText(std::string_view text)
{
    return leadingDecimal(text);
}

} // namespace kestrelon
