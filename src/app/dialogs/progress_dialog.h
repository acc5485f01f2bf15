#pragma once
// The progress window of a long operation (an encode or decode batch): a text
// line above a bar, and a "Stop" button. The batch runs on the user-interface
// thread, so every update pumps the event queue: the windows keep painting and
// a click on "Stop" is seen before the engine moves on to the next row.
//
// The frame's user-interaction port hands its progress calls to one of these;
// ProgressPort below does the same for any other port.
#include "common/user_port.h"

#include <QDialog>
#include <QElapsedTimer>

#include <string_view>

class QLabel;
class QProgressBar;
class QPushButton;

namespace kestrelon {

class ProgressDialog : public QDialog {
    Q_OBJECT
public:
    explicit ProgressDialog(QWidget* parent = nullptr);

    // Starts a run with `title`, an empty text and the bar at 0 of 0..100. A
    // stop request of an earlier run is forgotten. The window (modal to the
    // application, not blocking) shows once the run, or the batch it is part
    // of, has lasted kShowAfter: short work never flashes a window.
    void begin(std::string_view title);
    static constexpr int kShowAfterMs = 300;
    // A batch of runs, one per row: the window stays up from row to row and
    // says which row it is on ("Encoding 2 of 4: hts1a.wav").
    void startBatch();
    void finishBatch();
    void setBatchItem(std::string_view text);
    void setRange(int low, int high);
    void setPosition(int position);
    void setText(std::string_view text);
    // Keeps the window painting and its Stop answering while the work is elsewhere.
    void keepAnswering() { pump(); }
    // Hides the window; the stop request stays readable until the next
    // begin() or clearStop(): a batch reads it after its row ends.
    void end();
    // Forgets a stop request. A batch calls it before its first row, since
    // the engine asks for a stop before it shows any progress.
    void clearStop() { m_stopRequested = false; }

    bool stopRequested() const { return m_stopRequested; }
    bool isRunning() const { return m_running; }

    // What a click on "Stop" does; public so a test or a shortcut can press it.
    void requestStop();

    QPushButton* stopButton() const { return m_stop; }
    QProgressBar* bar() const { return m_bar; }
    QLabel* textLine() const { return m_text; }
    QLabel* batchLine() const { return m_item; }

protected:
    // Closing the window during a batch asks it to stop; it never just vanishes.
    void reject() override;
    void closeEvent(QCloseEvent* event) override;

private:
    void pump();
    void showWhenLong();

    QLabel* m_item;
    QLabel* m_text;
    QProgressBar* m_bar;
    QPushButton* m_stop;
    bool m_stopRequested = false;
    bool m_running = false;
    bool m_inBatch = false;
    QElapsedTimer m_since; // since the run, or the batch, began
};

// A port that shows messages and questions through `inner` and progress in
// `dialog`; a stop request is the dialog's or the inner port's.
class ProgressPort : public UserPort {
public:
    // A new port starts a new batch: an earlier stop request is forgotten.
    ProgressPort(UserPort& inner, ProgressDialog& dialog)
        : m_inner(inner)
        , m_dialog(dialog)
    {
        m_dialog.startBatch();
    }
    ~ProgressPort() override { m_dialog.finishBatch(); }
    ProgressPort(const ProgressPort&) = delete;
    ProgressPort& operator=(const ProgressPort&) = delete;

    void showMessage(std::string_view text) override { m_inner.showMessage(text); }
    void showFailure(std::string_view text, std::string_view reason) override { m_inner.showFailure(text, reason); }
    Answer ask(std::string_view text, Buttons buttons, std::string_view caption = {}) override
    {
        return m_inner.ask(text, buttons, caption);
    }
    Answer askAboutFiles(std::string_view heading, const std::vector<std::string>& names,
                         std::string_view question) override
    {
        return m_inner.askAboutFiles(heading, names, question);
    }
    void beginProgress(std::string_view title) override { m_dialog.begin(title); }
    void setProgressRange(int low, int high) override { m_dialog.setRange(low, high); }
    void setProgressPosition(int position) override { m_dialog.setPosition(position); }
    void setProgressText(std::string_view text) override { m_dialog.setText(text); }
    void setBatchItem(std::string_view text) override { m_dialog.setBatchItem(text); }
    void idle() override { m_dialog.keepAnswering(); }
    void endProgress() override { m_dialog.end(); }
    bool stopRequested() override { return m_dialog.stopRequested() || m_inner.stopRequested(); }

private:
    UserPort& m_inner;
    ProgressDialog& m_dialog;
};

} // namespace kestrelon
