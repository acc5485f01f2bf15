#pragma once
// The one way core code talks to a person. The workbench shows message boxes and
// progress dialogs, kestrelon-cli prints and answers from its options, tests
// script the answers. Core code never opens a window itself.
#include <string>
#include <string_view>
#include <vector>

namespace kestrelon {

// ReplaceSkipSkipAllStop: the "Check" question of a batch (Replace, Skip,
// Skip All, Stop), answered Yes, No, SkipAll or Cancel.
enum class Buttons { YesNo, YesNoCancel, OkCancel, ReplaceSkipSkipAllStop };
enum class Answer { Ok, Cancel, Yes, No, SkipAll };

std::string_view answerName(Answer answer); // "ok", "cancel", "yes", "no", "skipall"

class UserPort {
public:
    virtual ~UserPort() = default;

    // A message box with only an OK button.
    virtual void showMessage(std::string_view text) = 0;
    // A failure: the program's own text, then the system's reason for it
    // ("No space left on device"). By default the reason follows on a line
    // of its own; a script gets it apart. An empty reason adds nothing.
    virtual void showFailure(std::string_view text, std::string_view reason);
    // A question; `caption` is empty for the program's standard caption.
    virtual Answer ask(std::string_view text, Buttons buttons, std::string_view caption = {}) = 0;

    // A Yes/No question about several files at once: `heading` over the
    // names in a read-only list, then `question`. By default it is asked as
    // one text, a name a line.
    virtual Answer askAboutFiles(std::string_view heading, const std::vector<std::string>& names,
                                 std::string_view question);

    // Progress of a long operation; the defaults ignore it.
    virtual void beginProgress(std::string_view title) {}
    virtual void setProgressRange(int low, int high) {}
    virtual void setProgressPosition(int position) {}
    virtual void setProgressText(std::string_view text) {}
    // Where a batch is: "Encoding 2 of 4: hts1a.wav".
    virtual void setBatchItem(std::string_view text) {}
    virtual void endProgress() {}
    // Nothing new to show while work goes on elsewhere; a window keeps
    // answering the person meanwhile.
    virtual void idle() {}
    // True once the person asked the running batch to stop.
    virtual bool stopRequested() { return false; }
};

} // namespace kestrelon
