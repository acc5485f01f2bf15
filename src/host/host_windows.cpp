#include "host/host_windows.h"

#include "common/user_port.h"
#include "kestrelon/codec_plugin.h"

#include <utility>

namespace kestrelon {

ProgressBarWindow::ProgressBarWindow(UserPort& port)
    : m_port(port)
    , m_window{sizeof(kestrelon_host_window), this, &setRange, &setPosition, nullptr, nullptr, &shouldStop}
{}

int32_t ProgressBarWindow::shouldStop(void* context)
{
    return static_cast<ProgressBarWindow*>(context)->m_port.stopRequested() ? 1 : 0;
}

void ProgressBarWindow::setRange(void* context, int32_t low, int32_t high)
{
    static_cast<ProgressBarWindow*>(context)->m_port.setProgressRange(low, high);
}

void ProgressBarWindow::setPosition(void* context, int32_t position)
{
    static_cast<ProgressBarWindow*>(context)->m_port.setProgressPosition(position);
}

ProgressTextWindow::ProgressTextWindow(UserPort& port)
    : m_port(port)
    , m_window{sizeof(kestrelon_host_window), this, nullptr, nullptr, &setText, nullptr, nullptr}
{}

void ProgressTextWindow::setText(void* context, const char* utf8)
{
    static_cast<ProgressTextWindow*>(context)->m_port.setProgressText(utf8 != nullptr ? utf8 : "");
}

MainHostWindow::MainHostWindow(StepListener onStep)
    : m_onStep(std::move(onStep))
    , m_window{sizeof(kestrelon_host_window), this, nullptr, nullptr, nullptr, &postMessage, nullptr}
{}

void MainHostWindow::stepDone()
{
    ++m_steps;
    if (m_onStep)
        m_onStep();
}

void MainHostWindow::postMessage(void* context, uint32_t message, uintptr_t, intptr_t)
{
    if (message == KESTRELON_STEP_MESSAGE)
        static_cast<MainHostWindow*>(context)->stepDone();
}

} // namespace kestrelon
