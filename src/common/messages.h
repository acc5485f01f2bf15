#pragma once
// Every text the program shows to a user, kept in one place and used exactly as
// written: spacing, punctuation and spelling are the program's own and other
// tools match on them. Texts that take a name are split at the name.
#include <string_view>

namespace kestrelon::msg {

// Start-up and frame
inline constexpr std::string_view kAlreadyRunning = "This program is already running!";
// The help file is named by the path looked for: "Not found help file "PATH" !".
inline constexpr std::string_view kHelpNotFoundPrefix = "Not found help file \"";
inline constexpr std::string_view kHelpNotFoundSuffix = "\" !";
inline constexpr std::string_view kExternalEditorMissing = "The external editor has not existed!";
inline constexpr std::string_view kKeycodeError = "The keycode is error !";

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
// Failures of the project lifecycle: a copy, folder or deletion that fails is
// reported, so the user never believes a project was saved or closed whole
// when it was not.
inline constexpr std::string_view kProjectInUsePrefix = "The project is in use by "; // then who, and the suffix
inline constexpr std::string_view kProjectInUseSuffix = " !\nIt can be opened when that program has closed it.";
inline constexpr std::string_view kAbandonedWorkDropped =
    "The project was not closed when it was last used: the changes that had not been saved are gone, and the "
    "project is as it was last saved.";
inline constexpr std::string_view kCannotSaveWait = "Cannot save the project, please wait !";
inline constexpr std::string_view kSaveProjectFailed = "Save project failed !";
inline constexpr std::string_view kCanNotCopyPrefix = "Can not copy "; // source, then kCopyTo, then target
inline constexpr std::string_view kCopyTo = " to ";
inline constexpr std::string_view kCopyBackFailedSuffix = " !\nNothing has been deleted and the project stays open.";
inline constexpr std::string_view kSaveAsCopyFailedSuffix = " !\nThe project has not been saved under the new name.";
inline constexpr std::string_view kCanNotCreateFolderSuffix = " !"; // after kCanNotCreatePrefix and a folder
inline constexpr std::string_view kCanNotDeletePrefix = "Can not delete "; // a folder, then kCanNotDeleteSuffix
inline constexpr std::string_view kCanNotDeleteSuffix = " completely !";
inline constexpr std::string_view kSaveAsIntoTemp = "A project can not be saved inside its own Temp folder !";

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
inline constexpr std::string_view kFolderNameEmptyRename = "The folder name is empty,can't rename successfully!";
inline constexpr std::string_view kFolderNameTooLong = "The folder name is too long !";
inline constexpr std::string_view kFolderTooDeep = "The folder can not be nested so deeply !";
// After kCanNotAddFilePrefix and the quoted file name.
inline constexpr std::string_view kCopyFailedSuffix = "!\nIt could not be copied into the project folder!";
inline constexpr std::string_view kFileNameTooLongSuffix = "!\nIts name is too long for the project file!";

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
// After kCanNotCopyPrefix, a file, kCopyTo and a file.
inline constexpr std::string_view kAlgorithmNotAddedSuffix = " !\nThe algorithm could not be added to the project.";

// Encoded files and export
inline constexpr std::string_view kNotACorrectEncodedFile = " is not a correct encoded file !";
inline constexpr std::string_view kReplaceItSuffix = " already existed , replace it ?";
inline constexpr std::string_view kTheExportFilePrefix = "The export file ";
inline constexpr std::string_view kExportError = "There is a error when exportting!";
// Failures of export: an export name that would overwrite the project's own
// files, the index or another row's events is refused rather than written.
inline constexpr std::string_view kExportNameInvalidSuffix =
    " is not a valid export file name !"; // after the quoted name
inline constexpr std::string_view kExportCanNotWritePrefix = "Can not write the export file "; // path, then the suffix
inline constexpr std::string_view kExportCanNotWriteSuffix = " !";
inline constexpr std::string_view kExportWorkingFileSuffix =
    " is a working file of the project and can not be replaced !"; // after the quoted name
inline constexpr std::string_view kExportNameIsIndexSuffix =
    " is the name of the export's index file and can not be an export file name !"; // after the quoted name
inline constexpr std::string_view kExportEventsClashPrefix =
    "The speech events of "; // export name, middle, .tab path, then " !"
inline constexpr std::string_view kExportEventsClashMiddle = " would replace those of another row in ";

// Speech events
inline constexpr std::string_view kDefaultLabel = "Default Label";
inline constexpr std::string_view kEventIdExists = "The ID already existed , replace it ?";
inline constexpr std::string_view kEventIdRange = "The ID must be a number from 1 to 254 !";
inline constexpr std::string_view kEventFileNotWrittenPrefix =
    "Can not write the speech event file "; // path, then " !"
inline constexpr std::string_view kEventNotFoundPrefix = "There is no event with the ID "; // then the ID and " !"

// Waveform windows
inline constexpr std::string_view kWaveSaveExtension = "Sorry,file extension should be '.wav' !";
inline constexpr std::string_view kWaveWriteError = "Write output .wav file error";
inline constexpr std::string_view kWaveSaveFailed = "Save as .wav file fails!";
inline constexpr std::string_view kWaveRangeInvalid = "The range to save lies outside the wave !";

// Settings
inline constexpr std::string_view kSettingsUnreadable = "The settings could not be read; the defaults are used.";
inline constexpr std::string_view kSettingsNotSaved =
    "The settings could not be saved; the changes of this session are lost.";

// Wave files (the file's name is put in front)
inline constexpr std::string_view kWaveMissing = " does not exist !";
inline constexpr std::string_view kWaveNotReadable = " is not a readable wave file !";
inline constexpr std::string_view kWaveDamaged = " is damaged: it holds less sound than its header says !";
inline constexpr std::string_view kWaveTooLong = " is too long to load !";
inline constexpr std::string_view kWaveRateUnsupported =
    " has a sample rate that cannot be converted to the codec's rate !";

// Reference codec plug-ins (shown by the host as the codec's error text). A
// file or codec name goes in front of a text beginning with a blank; the
// pieces of a text with two names are joined in the order listed.
inline constexpr std::string_view kCodecSuffix = " !";
inline constexpr std::string_view kCodecBodyUnreadable = " cannot be read as a codec body file !";
inline constexpr std::string_view kCodecBodyBadValue = " has no valid "; // then the key, then kCodecSuffix
inline constexpr std::string_view kCodecBodyOtherCodec = " describes the codec "; // then its name, kCodecNot, ours
inline constexpr std::string_view kCodecNot = ", not ";
inline constexpr std::string_view kCodecBitRatePrefix = "The bit rate "; // rate, kCodecBitRateMiddle, codec, suffix
inline constexpr std::string_view kCodecBitRateMiddle = " is not offered by ";
inline constexpr std::string_view kCodecNoBitRate = "No bit rate has been chosen for "; // codec, suffix
inline constexpr std::string_view kCodecSourceRateMiddle = " has a sample rate that "; // wave, this, codec, suffix
inline constexpr std::string_view kCodecSourceRateSuffix = " does not accept !";
inline constexpr std::string_view kCodecEventsUnreadable = " cannot be read as a speech event file !";
inline constexpr std::string_view kCodecLibraryFailed = " could not encode: its codec library failed !";
inline constexpr std::string_view kCodecCanNotWrite = "Can not write "; // file, suffix
inline constexpr std::string_view kCodecOtherCodecFile = " was not encoded by "; // file, this, codec, suffix
inline constexpr std::string_view kCodecDamaged = " is damaged: its encoded data is incomplete or altered !";

// Body information
inline constexpr std::string_view kVolumeAboveMaximum =
    "The input volume value is larger than the maximum value of this body!";
inline constexpr std::string_view kVolumeBelowMinimum =
    "The input volume value is smaller than the minimum value of this body!";

// The volumes written back at exit, when neither the program folder's file nor
// the user's copy could take them.
inline constexpr std::string_view kVolumesNotKeptPrefix = "The body volumes could not be kept: "; // reason, then " !"

// Playing on the PC.
inline constexpr std::string_view kPcPlayDllNotFound = "Body PcPlay DLL not found!!";
inline constexpr std::string_view kDoNotExistInProjectFolder =
    " do not exist in project folder !"; // after the file name
inline constexpr std::string_view kDecodedTempNotFound = "The decoded temporary file is not found!";
// Play lists.
inline constexpr std::string_view kBoardIsPlaying = "The board is playing!";
inline constexpr std::string_view kPlayListFull = "Can't add more!";
// Playing a sentence on the PC: what cannot play asks whether to go on.
inline constexpr std::string_view kSentenceSourceMissing = " doesn't exist in project folder!"; // after the file name
inline constexpr std::string_view kPlayNextQuestion = "\nDo you want to play next?";
inline constexpr std::string_view kSentenceCanNotOpen = "Can't open "; // the file name, then "!"
inline constexpr std::string_view kPlayNextShortQuestion = " Do you want to play next?";
inline constexpr std::string_view kNoDecodeFiles = "Not found decode file(s)!";
inline constexpr std::string_view kPlayListItemsRemoved =
    "Some items can't be found in the selected list!\nThey are removed from the play list!";

// Playing on the target board.
inline constexpr std::string_view kBoardPlayDllNotLoaded = "BoardPlay dll did not load successfully !";
inline constexpr std::string_view kBoardPortError = "Hardware port checked error. Please connect the board properly!";
inline constexpr std::string_view kBoardNoDataAck = "Can't get data ack from the host!";
// Body Information's "Get Version" status line: "Version   Host:%d   Driver:%d", or "Failed" for the driver.
inline constexpr std::string_view kBoardVersionFailed = "Failed! Please check the hardware!";
inline constexpr std::string_view kBoardVersionHost = "Version   Host:";
inline constexpr std::string_view kBoardVersionDriver = "   Driver:";
inline constexpr std::string_view kBoardDriverFailed = "Failed";
// The checks before a row's encoded data goes to the board, in their order.
inline constexpr std::string_view kNoEncodeFile = "Do not have encode file !";
inline constexpr std::string_view kNoBody = "Do not have body !";
inline constexpr std::string_view kAlgorithmNotSupported = " do not support !"; // after the algorithm
inline constexpr std::string_view kNotACorrectEncodeFile = " is not a correct encode file !"; // after the file name
inline constexpr std::string_view kSampleRateExceedsBody =
    "The sample rate of \"%s\" exceeds the range of the body setting of Kestrelon!\nDo you still want to play?";
inline constexpr std::string_view kSampleRatesExceedBody =
    "The sample rate of the following file(s) exceed the range of the body setting of Kestrelon!";
inline constexpr std::string_view kStillWantToPlay = "Do you still want to play?";
// Own texts: what cannot play, and why.
inline constexpr std::string_view kNothingDecodedToPlay = "This item has not been decoded yet !";
inline constexpr std::string_view kCanNotPlayPrefix = "Can not play "; // the file, then " !"

// DLL setting: removing an algorithm asks first, and a registry or library
// that could not be changed is named, so Algos and the registry never drift apart
// unnoticed.
inline constexpr std::string_view kRemoveAlgorithmPrefix =
    "Are you sure to remove the algorithm "; // name, then the suffix
inline constexpr std::string_view kRemoveAlgorithmSuffix = " from the project?";
inline constexpr std::string_view kCanNotDeleteFileSuffix = " !"; // after kCanNotDeletePrefix and a file
inline constexpr std::string_view kEditorNotExecutable = " is not an executable program !"; // after the path
inline constexpr std::string_view kRegistryNotWritten = " could not be written !"; // after the registry's path
inline constexpr std::string_view kExternalEditorNotExisted = "The external editor has not existed!";

// Encode/decode engine: failures of the file work around the codec. A file's
// name goes in front.
inline constexpr std::string_view kInterimMissing = " does not exist in the project folder !";
inline constexpr std::string_view kInterimCanNotPack = " could not be packed !";
inline constexpr std::string_view kInterimCanNotUnpack = " could not be unpacked: it is damaged !";
inline constexpr std::string_view kInterimNotWrittenMiddle =
    " could not be written: "; // name, this, the system's reason, " !"
inline constexpr std::string_view kNoTempFileIn = "Can not create a temporary file in "; // folder, then " !"
inline constexpr std::string_view kCanNotCopySuffix = " !"; // after kCanNotCopyPrefix, a file, kCopyTo, a file

// The quality measures kept beside the project, after the file's path.
inline constexpr std::string_view kQualityNotWritten = " could not be written: the quality measures were not kept !";

// A source the encode cannot read: its name here, the reason after.
inline constexpr std::string_view kSourceUnreadableSuffix = " could not be read, so it was not encoded !";

// A codec run apart that ended without answering: "NAME" + text + "encoding FILE !".
inline constexpr std::string_view kCodecStoppedWorking = " stopped working while ";
inline constexpr std::string_view kCodecStoppedAnswering = " stopped answering while ";
// The list of codecs that broke, after its file's path.
inline constexpr std::string_view kBrokenCodecsNotWritten =
    " could not be written: the codecs that broke are not remembered !";
// Asked before a batch gives such a codec a row again: "Codec2 stopped working in ...".
inline constexpr std::string_view kCodecBrokeBefore = " stopped working in an earlier batch.\nUse it again ?";
inline constexpr std::string_view kCodecWorkerMissing = "The codec worker could not be started: ";

// A decode that claimed success: ALGO + this, then the wave reader's reason.
inline constexpr std::string_view kDecodeNotAWave = " did not decode to a wave file !";

// Undo and Redo.
inline constexpr std::string_view kUndoProjectChanged =
    "The project has changed since that step (by an encode, a decode or a save), so it cannot be taken back.";
inline constexpr std::string_view kUndoFilesNotMoved = "These files could not be moved back into place:";

// Clear: a row's results go, so it asks first.
inline constexpr std::string_view kClearQuestion =
    "Clear the encode and decode results of the selected item(s)?\nThey can be made again by encoding.";

// Encode Info
inline constexpr std::string_view kRowNotEncoded = "This item has not been encoded yet !";

} // namespace kestrelon::msg
