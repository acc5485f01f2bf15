#pragma once
// The keyword and key lines of the project file. The reader matches each as a
// case-insensitive prefix of exactly its own length; the writer writes them as
// they stand here.
#include <string_view>

namespace kestrelon::ptp {

inline constexpr std::string_view kBeginProject = "# Begin Project";
inline constexpr std::string_view kEndProject = "# End Project";
inline constexpr std::string_view kBeginFiles = "# Begin Files";
inline constexpr std::string_view kEndFiles = "# End Files";
inline constexpr std::string_view kBeginAlgorithms = "# Begin Algorithms";
inline constexpr std::string_view kEndAlgorithms = "# End Algorithms";
inline constexpr std::string_view kBeginGroup = "# Begin Group";
inline constexpr std::string_view kEndGroup = "# End Group";
inline constexpr std::string_view kBeginSourceFile = "# Begin Source File";
inline constexpr std::string_view kEndSourceFile = "# End Source File";
inline constexpr std::string_view kBeginEditInfo = "# Begin EditInfo";
inline constexpr std::string_view kEndEditInfo = "# End EditInfo";

inline constexpr std::string_view kId = "ID=";
inline constexpr std::string_view kParam = "PARAM=";
inline constexpr std::string_view kSource = "SOURCE=";

inline constexpr std::string_view kAlgoName = "AlgoName=";
inline constexpr std::string_view kFileName = "FileName=";
inline constexpr std::string_view kBodyName = "BodyName=";
inline constexpr std::string_view kEncodeName = "EncodeName=";
inline constexpr std::string_view kEncodeSize = "EncodeSize=";
inline constexpr std::string_view kRenameEncode = "RenameEncode=";
inline constexpr std::string_view kDecodeName = "DecodeName=";
inline constexpr std::string_view kDecodeSize = "DecodeSize=";
inline constexpr std::string_view kEncodeBitRate = "EncodeBitRate=";
inline constexpr std::string_view kMultiSelect = "MultiSelect=";

// A group line holds the name in quotes from this offset on: "# Begin Group \"".
inline constexpr std::size_t kGroupNameOffset = 15;

} // namespace kestrelon::ptp
