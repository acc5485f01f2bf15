#pragma once
// The host's windows as a codec plug-in sees them: plain C structs with
// callbacks (kestrelon_host_window). The progress bar and the progress text
// line forward to the UserPort's progress calls, so the same plug-in drives a
// progress dialog in the workbench, standard error in kestrelon-cli and a
// recorder in the tests. The main window receives the codec's "step done"
// posts of message 0x403.
//
// Each adapter hands out a pointer to a struct inside itself, so adapters can
// be neither copied nor moved, and must outlive every call that received them
// (the main window: as long as a codec holds its address from parameter 1).
#include "kestrelon/plugin_base.h"

#include <functional>

namespace kestrelon {

class UserPort;

// A progress bar: set_range and set_position reach the port.
class ProgressBarWindow {
public:
    explicit ProgressBarWindow(UserPort& port);
    ProgressBarWindow(const ProgressBarWindow&) = delete;
    ProgressBarWindow& operator=(const ProgressBarWindow&) = delete;

    const kestrelon_host_window* window() const { return &m_window; }

private:
    static void setRange(void* context, int32_t low, int32_t high);
    static void setPosition(void* context, int32_t position);
    // The codec asks between blocks of frames: a Stop clicked in the progress window.
    static int32_t shouldStop(void* context);

    UserPort& m_port;
    kestrelon_host_window m_window;
};

// The text line above the progress bar: set_text reaches the port.
class ProgressTextWindow {
public:
    explicit ProgressTextWindow(UserPort& port);
    ProgressTextWindow(const ProgressTextWindow&) = delete;
    ProgressTextWindow& operator=(const ProgressTextWindow&) = delete;

    const kestrelon_host_window* window() const { return &m_window; }

private:
    static void setText(void* context, const char* utf8);

    UserPort& m_port;
    kestrelon_host_window m_window;
};

// The main window: counts the posts of the progress message (0x403) and tells
// an optional listener about each; other messages are ignored.
class MainHostWindow {
public:
    using StepListener = std::function<void()>;

    explicit MainHostWindow(StepListener onStep = {});
    MainHostWindow(const MainHostWindow&) = delete;
    MainHostWindow& operator=(const MainHostWindow&) = delete;

    const kestrelon_host_window* window() const { return &m_window; }

    int stepsDone() const { return m_steps; }
    void resetSteps() { m_steps = 0; }
    // Counts one step, as a post of 0x403 does; the engine calls this after
    // each step it runs itself.
    void stepDone();

private:
    static void postMessage(void* context, uint32_t message, uintptr_t wparam, intptr_t lparam);

    StepListener m_onStep;
    int m_steps = 0;
    kestrelon_host_window m_window;
};

} // namespace kestrelon
