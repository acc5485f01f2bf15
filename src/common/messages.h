#pragma once
// Every text the program shows to a user, kept in one place and used exactly as
// written: spacing, punctuation and spelling are the program's own and other
// tools match on them. Texts that take a name are split at the name.
#include <string_view>

namespace kestrelon::msg {

// Start-up and frame
inline constexpr std::string_view kAlreadyRunning = "This program is already running!";
inline constexpr std::string_view kHelpNotFound = "Not found help file \"Kestrelon.chm\" !";

// Ini documents
inline constexpr std::string_view kInvalidData = "Invalid data!";
inline constexpr std::string_view kUnableToOpenIni = "Unable to open ini file.";

// Project lifecycle
inline constexpr std::string_view kFileNameIsNull = "File name is null !";
inline constexpr std::string_view kInvalidCharacters = "Invalid characters in the filename have been detected !";
inline constexpr std::string_view kWrongPath = "It is a wrong path !";
inline constexpr std::string_view kCanNotCreatePrefix = "Can not create ";
inline constexpr std::string_view kBecauseFileExisted = ",\nbecause it has existed!";
inline constexpr std::string_view kBecauseFolderExisted = ",\nbecause the project folder has existed!";
inline constexpr std::string_view kPathNotExisted = "Path is not existed!";
inline constexpr std::string_view kProjectPathNotExisted = "Project path is not existed!";
inline constexpr std::string_view kTheProjectPrefix = "The project ";
inline constexpr std::string_view kAlreadyExistedSuffix = " already existed!";
inline constexpr std::string_view kProjectFileNotFound = "Project file not found !!";
inline constexpr std::string_view kProjectIsOpen = "The project is open !";
inline constexpr std::string_view kOpenProjectFailed = "Open project failed !";
inline constexpr std::string_view kDirectoryAlreadyExisted = "The directory already existed !";
inline constexpr std::string_view kCannotCloseWait = "Cannot close the project, please wait !";
inline constexpr std::string_view kSaveBeforeClose = "The project has been modified! Save it before close?";
// Texts handed to the silent error log; they reach no one.
inline constexpr std::string_view kLogOpenProjectFileError = "Open project file error!";
inline constexpr std::string_view kLogSaveProjectFileError = "Save project file error";
inline constexpr std::string_view kLogSaveSetFileError = "Error in save set file!";

// Missing source file while reading a project ("LoseFile" dialog)
inline constexpr std::string_view kLoseFileCaption = "LoseFile";
inline constexpr std::string_view kLoseFileLine1 = "Project file :";
inline constexpr std::string_view kLoseFileLine3 = "is/are not existed! ";
inline constexpr std::string_view kLoseFileQuestion = "Do you want to delete the corresponding list item?";

// Workspace tree
inline constexpr std::string_view kFolderNameEmpty = "The folder name is empty,can't add successfully!";
inline constexpr std::string_view kTheFilePrefix = "The file ";
inline constexpr std::string_view kOverwriteSuffix = " already existed in this folder!\nDo you want to overwrite it?";
inline constexpr std::string_view kCanNotAddFilePrefix = "Can not add the file ";
inline constexpr std::string_view kInOtherFolderSuffix = "!\nIt already existed in other folder of this project!";
inline constexpr std::string_view kDeleteAllItems = "Are you sure to delete all items?";
inline constexpr std::string_view kDeleteItemPrefix = "Are you sure to delete the item ";
inline constexpr std::string_view kDeleteFolderPrefix = "Are you sure to delete the folder ";
inline constexpr std::string_view kDeleteSelectedItems = "Are you sure to delete selected items?";

// Main list
inline constexpr std::string_view kDeleteSelectedItem = "Are you sure to delete the selected item?";
inline constexpr std::string_view kDeleteAllListItems = "Are you sure to delete all items ?";
inline constexpr std::string_view kThereIsAError = "There is a error!";
inline constexpr std::string_view kReplaceExistedMiddle = " already existed!\n";
inline constexpr std::string_view kReplaceQuestion = "Do you want to replace it?";

// Algorithm plug-ins
inline constexpr std::string_view kLoadedUnsuccessful = " is loaded unsuccessful !";
inline constexpr std::string_view kNotACorrectAlgorithm = " is not a correct algorithm !";
inline constexpr std::string_view kBodyFileOfPrefix = "The body file of ";
inline constexpr std::string_view kBodyFileMissingSuffix = " do not exist !";
inline constexpr std::string_view kReadLengthUnsuccessful = "read length unsuccessful !";
inline constexpr std::string_view kEncodingSuffix = " Encoding ......";
inline constexpr std::string_view kDecodingSuffix = " Decoding ......";

// Encoded files and export
inline constexpr std::string_view kNotACorrectEncodedFile = " is not a correct encoded file !";
inline constexpr std::string_view kReplaceItSuffix = " already existed , replace it ?";
inline constexpr std::string_view kTheExportFilePrefix = "The export file ";
inline constexpr std::string_view kExportError = "There is a error when exportting!";

// Speech events
inline constexpr std::string_view kDefaultLabel = "Default Label";

// Settings
inline constexpr std::string_view kSettingsUnreadable = "The settings could not be read; the defaults are used.";

// Wave files (the file's name is put in front)
inline constexpr std::string_view kWaveMissing = " does not exist !";
inline constexpr std::string_view kWaveNotReadable = " is not a readable wave file !";
inline constexpr std::string_view kWaveDamaged = " is damaged: it holds less sound than its header says !";
inline constexpr std::string_view kWaveTooLong = " is too long to load !";
inline constexpr std::string_view kWaveRateUnsupported = " has a sample rate that cannot be converted to the codec's rate !";

} // namespace kestrelon::msg
