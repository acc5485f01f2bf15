// Every text the program shows, pinned letter for letter: a lost blank, a
// changed "!" or a reworded sentence in the messages header fails here, and
// tests elsewhere may then compare with the constants.
#include "common/messages.h"

#include <gtest/gtest.h>

#include <string_view>

namespace {

struct Text {
    const char* name;
    std::string_view constant;
    std::string_view expected;
};

#define TEXT(constant, expected)                                                                                       \
    Text                                                                                                               \
    {                                                                                                                  \
#constant, kestrelon::msg::constant, expected                                                                  \
    }

// The texts users of the program know, exactly as they have always read.
const Text kKnownTexts[] = {
    TEXT(kAlreadyRunning, "This program is already running!"),
    TEXT(kHelpNotFoundPrefix, "Not found help file \""),
    TEXT(kHelpNotFoundSuffix, "\" !"),
    TEXT(kExternalEditorMissing, "The external editor has not existed!"),
    TEXT(kKeycodeError, "The keycode is error !"),
    TEXT(kInvalidData, "Invalid data!"),
    TEXT(kUnableToOpenIni, "Unable to open ini file."),
    TEXT(kFileNameIsNull, "File name is null !"),
    TEXT(kInvalidCharacters, "Invalid characters in the filename have been detected !"),
    TEXT(kWrongPath, "It is a wrong path !"),
    TEXT(kCanNotCreatePrefix, "Can not create "),
    TEXT(kBecauseFileExisted, ",\nbecause it has existed!"),
    TEXT(kBecauseFolderExisted, ",\nbecause the project folder has existed!"),
    TEXT(kPathNotExisted, "Path is not existed!"),
    TEXT(kProjectPathNotExisted, "Project path is not existed!"),
    TEXT(kTheProjectPrefix, "The project "),
    TEXT(kAlreadyExistedSuffix, " already existed!"),
    TEXT(kProjectFileNotFound, "Project file not found !!"),
    TEXT(kProjectIsOpen, "The project is open !"),
    TEXT(kOpenProjectFailed, "Open project failed !"),
    TEXT(kDirectoryAlreadyExisted, "The directory already existed !"),
    TEXT(kCannotCloseWait, "Cannot close the project, please wait !"),
    TEXT(kSaveBeforeClose, "The project has been modified! Save it before close?"),
    TEXT(kLogOpenProjectFileError, "Open project file error!"),
    TEXT(kLogSaveProjectFileError, "Save project file error"),
    TEXT(kLogSaveSetFileError, "Error in save set file!"),
    TEXT(kCanNotCreateFolderSuffix, " !"),
    TEXT(kLoseFileCaption, "LoseFile"),
    TEXT(kLoseFileLine1, "Project file :"),
    TEXT(kLoseFileLine3, "is/are not existed! "),
    TEXT(kLoseFileQuestion, "Do you want to delete the corresponding list item?"),
    TEXT(kFolderNameEmpty, "The folder name is empty,can't add successfully!"),
    TEXT(kTheFilePrefix, "The file "),
    TEXT(kOverwriteSuffix, " already existed in this folder!\nDo you want to overwrite it?"),
    TEXT(kCanNotAddFilePrefix, "Can not add the file "),
    TEXT(kInOtherFolderSuffix, "!\nIt already existed in other folder of this project!"),
    TEXT(kDeleteAllItems, "Are you sure to delete all items?"),
    TEXT(kDeleteItemPrefix, "Are you sure to delete the item "),
    TEXT(kDeleteFolderPrefix, "Are you sure to delete the folder "),
    TEXT(kDeleteSelectedItems, "Are you sure to delete selected items?"),
    TEXT(kDeleteSelectedItem, "Are you sure to delete the selected item?"),
    TEXT(kDeleteAllListItems, "Are you sure to delete all items ?"),
    TEXT(kThereIsAError, "There is a error!"),
    TEXT(kReplaceExistedMiddle, " already existed!\n"),
    TEXT(kReplaceQuestion, "Do you want to replace it?"),
    TEXT(kLoadedUnsuccessful, " is loaded unsuccessful !"),
    TEXT(kNotACorrectAlgorithm, " is not a correct algorithm !"),
    TEXT(kBodyFileOfPrefix, "The body file of "),
    TEXT(kBodyFileMissingSuffix, " do not exist !"),
    TEXT(kReadLengthUnsuccessful, "read length unsuccessful !"),
    TEXT(kEncodingSuffix, " Encoding ......"),
    TEXT(kDecodingSuffix, " Decoding ......"),
    TEXT(kNotACorrectEncodedFile, " is not a correct encoded file !"),
    TEXT(kReplaceItSuffix, " already existed , replace it ?"),
    TEXT(kTheExportFilePrefix, "The export file "),
    TEXT(kExportError, "There is a error when exportting!"),
    TEXT(kExportCanNotWriteSuffix, " !"),
    TEXT(kDefaultLabel, "Default Label"),
    TEXT(kEventIdExists, "The ID already existed , replace it ?"),
    TEXT(kWaveSaveExtension, "Sorry,file extension should be '.wav' !"),
    TEXT(kWaveWriteError, "Write output .wav file error"),
    TEXT(kWaveSaveFailed, "Save as .wav file fails!"),
    TEXT(kCodecSuffix, " !"),
    TEXT(kVolumeAboveMaximum, "The input volume value is larger than the maximum value of this body!"),
    TEXT(kVolumeBelowMinimum, "The input volume value is smaller than the minimum value of this body!"),
    TEXT(kCanNotDeleteFileSuffix, " !"),
    TEXT(kExternalEditorNotExisted, "The external editor has not existed!"),
    TEXT(kCanNotCopySuffix, " !"),
    TEXT(kPcPlayDllNotFound, "Body PcPlay DLL not found!!"),
    TEXT(kDoNotExistInProjectFolder, " do not exist in project folder !"),
    TEXT(kDecodedTempNotFound, "The decoded temporary file is not found!"),
    TEXT(kBoardIsPlaying, "The board is playing!"),
    TEXT(kPlayListFull, "Can't add more!"),
    TEXT(kPlayListItemsRemoved,
         "Some items can't be found in the selected list!\nThey are removed from the play list!"),
    TEXT(kBoardPlayDllNotLoaded, "BoardPlay dll did not load successfully !"),
    TEXT(kBoardPortError, "Hardware port checked error. Please connect the board properly!"),
    TEXT(kBoardNoDataAck, "Can't get data ack from the host!"),
    TEXT(kBoardVersionFailed, "Failed! Please check the hardware!"),
    TEXT(kBoardVersionHost, "Version   Host:"),
    TEXT(kBoardVersionDriver, "   Driver:"),
    TEXT(kBoardDriverFailed, "Failed"),
};

// Texts this program adds where a failure would otherwise go unsaid.
const Text kOwnTexts[] = {
    TEXT(kNothingDecodedToPlay, "This item has not been decoded yet !"),
    TEXT(kCanNotPlayPrefix, "Can not play "),
    TEXT(kProjectInUsePrefix, "The project is in use by "),
    TEXT(kProjectInUseSuffix, " !\nIt can be opened when that program has closed it."),
    TEXT(kAbandonedWorkDropped, "The project was not closed when it was last used: the changes that had not been "
                                "saved are gone, and the project is as it was last saved."),
    TEXT(kCannotSaveWait, "Cannot save the project, please wait !"),
    TEXT(kSaveProjectFailed, "Save project failed !"),
    TEXT(kCanNotCopyPrefix, "Can not copy "),
    TEXT(kCopyTo, " to "),
    TEXT(kCopyBackFailedSuffix, " !\nNothing has been deleted and the project stays open."),
    TEXT(kSaveAsCopyFailedSuffix, " !\nThe project has not been saved under the new name."),
    TEXT(kCanNotDeletePrefix, "Can not delete "),
    TEXT(kCanNotDeleteSuffix, " completely !"),
    TEXT(kSaveAsIntoTemp, "A project can not be saved inside its own Temp folder !"),
    TEXT(kFolderNameEmptyRename, "The folder name is empty,can't rename successfully!"),
    TEXT(kFolderNameTooLong, "The folder name is too long !"),
    TEXT(kFolderTooDeep, "The folder can not be nested so deeply !"),
    TEXT(kCopyFailedSuffix, "!\nIt could not be copied into the project folder!"),
    TEXT(kFileNameTooLongSuffix, "!\nIts name is too long for the project file!"),
    TEXT(kAlgorithmNotAddedSuffix, " !\nThe algorithm could not be added to the project."),
    TEXT(kExportNameInvalidSuffix, " is not a valid export file name !"),
    TEXT(kExportCanNotWritePrefix, "Can not write the export file "),
    TEXT(kExportWorkingFileSuffix, " is a working file of the project and can not be replaced !"),
    TEXT(kExportNameIsIndexSuffix, " is the name of the export's index file and can not be an export file name !"),
    TEXT(kExportEventsClashPrefix, "The speech events of "),
    TEXT(kExportEventsClashMiddle, " would replace those of another row in "),
    TEXT(kSettingsUnreadable, "The settings could not be read; the defaults are used."),
    TEXT(kSettingsNotSaved, "The settings could not be saved; the changes of this session are lost."),
    TEXT(kWaveMissing, " does not exist !"),
    TEXT(kEventIdRange, "The ID must be a number from 1 to 254 !"),
    TEXT(kEventFileNotWrittenPrefix, "Can not write the speech event file "),
    TEXT(kEventNotFoundPrefix, "There is no event with the ID "),
    TEXT(kWaveRangeInvalid, "The range to save lies outside the wave !"),
    TEXT(kWaveNotReadable, " is not a readable wave file !"),
    TEXT(kWaveDamaged, " is damaged: it holds less sound than its header says !"),
    TEXT(kWaveTooLong, " is too long to load !"),
    TEXT(kWaveRateUnsupported, " has a sample rate that cannot be converted to the codec's rate !"),
    TEXT(kCodecBodyUnreadable, " cannot be read as a codec body file !"),
    TEXT(kCodecBodyBadValue, " has no valid "),
    TEXT(kCodecBodyOtherCodec, " describes the codec "),
    TEXT(kCodecNot, ", not "),
    TEXT(kCodecBitRatePrefix, "The bit rate "),
    TEXT(kCodecBitRateMiddle, " is not offered by "),
    TEXT(kCodecNoBitRate, "No bit rate has been chosen for "),
    TEXT(kCodecSourceRateMiddle, " has a sample rate that "),
    TEXT(kCodecSourceRateSuffix, " does not accept !"),
    TEXT(kCodecEventsUnreadable, " cannot be read as a speech event file !"),
    TEXT(kCodecLibraryFailed, " could not encode: its codec library failed !"),
    TEXT(kCodecCanNotWrite, "Can not write "),
    TEXT(kCodecOtherCodecFile, " was not encoded by "),
    TEXT(kCodecDamaged, " is damaged: its encoded data is incomplete or altered !"),
    TEXT(kVolumesNotKeptPrefix, "The body volumes could not be kept: "),
    TEXT(kRemoveAlgorithmPrefix, "Are you sure to remove the algorithm "),
    TEXT(kRemoveAlgorithmSuffix, " from the project?"),
    TEXT(kEditorNotExecutable, " is not an executable program !"),
    TEXT(kRegistryNotWritten, " could not be written !"),
    TEXT(kInterimMissing, " does not exist in the project folder !"),
    TEXT(kInterimCanNotPack, " could not be packed !"),
    TEXT(kInterimCanNotUnpack, " could not be unpacked: it is damaged !"),
    TEXT(kInterimNotWrittenMiddle, " could not be written: "),
    TEXT(kNoTempFileIn, "Can not create a temporary file in "),
    TEXT(kRowNotEncoded, "This item has not been encoded yet !"),
};

} // namespace

TEST(Messages, EveryTextIsExactlyAsWritten)
{
    for (const Text& text : kKnownTexts)
        EXPECT_EQ(text.constant, text.expected) << text.name;
    for (const Text& text : kOwnTexts)
        EXPECT_EQ(text.constant, text.expected) << text.name;
}
