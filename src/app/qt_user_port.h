#pragma once
// The workbench's side of the user-interaction port: message boxes for
// messages and questions, the progress window (ProgressDialog) for long
// operations. Core code runs on the window's thread, so progress updates also
// let the windows paint and take the click on the window's "Stop" button.
#include "common/user_port.h"

#include <QPointer>
#include <QString>

#include <functional>
#include <memory>

class QWidget;

namespace kestrelon {

class ProgressDialog;

// The caption of the program's message boxes when the core gives none.
inline constexpr std::string_view kProgramCaption = "Kestrelon";

class QtUserPort : public UserPort {
public:
    // `parent` owns the boxes and dialogs; it may be null (before the frame exists).
    explicit QtUserPort(QWidget* parent = nullptr);
    ~QtUserPort() override;

    void setParent(QWidget* parent) { m_parent = parent; }

    void showMessage(std::string_view text) override;
    Answer ask(std::string_view text, Buttons buttons, std::string_view caption = {}) override;
    // A dialog: the heading, the names in a read-only multi-line box, the question, "Yes" and "No".
    Answer askAboutFiles(std::string_view heading, const std::vector<std::string>& names,
                         std::string_view question) override;

    void beginProgress(std::string_view title) override;
    void setProgressRange(int low, int high) override;
    void setProgressPosition(int position) override;
    void setProgressText(std::string_view text) override;
    void endProgress() override;
    bool stopRequested() override;

    // The progress window, made at the first progress report.
    ProgressDialog* progressDialog() const { return m_progress.get(); }

private:
    Answer askCheck(std::string_view text, std::string_view caption);
    ProgressDialog& progress();

    QPointer<QWidget> m_parent;
    std::unique_ptr<ProgressDialog> m_progress;
};

} // namespace kestrelon
