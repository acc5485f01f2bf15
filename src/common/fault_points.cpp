#include "common/fault_points.h"

#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>

#ifndef _WIN32
#include <unistd.h>
#endif

namespace kestrelon {

namespace {

enum class Mode { None, Kill, Full, Trace };

struct Plan {
    Mode mode = Mode::None;
    long at = 0;
};

Plan readPlan()
{
    const char* text = std::getenv("KESTRELON_FAULT");
    if (!text)
        return {};
    const std::string value(text);
    if (value == "trace")
        return {Mode::Trace, 0};
    const std::size_t sign = value.find('@');
    if (sign == std::string::npos)
        return {};
    const std::string what = value.substr(0, sign);
    const long at = std::atol(value.c_str() + sign + 1);
    if (at <= 0)
        return {};
    if (what == "kill")
        return {Mode::Kill, at};
    if (what == "full")
        return {Mode::Full, at};
    return {};
}

Plan g_plan;

} // namespace

void enableFaultPoints()
{
    g_plan = readPlan();
}

bool injectedFault(FaultPoint point, const std::filesystem::path& file)
{
    const Plan& plan = g_plan;
    if (plan.mode == Mode::None)
        return false;
    static std::atomic<long> reached{0};
    const long number = ++reached;
    if (plan.mode == Mode::Trace)
        std::fprintf(stderr, "fault point %ld: %s %s\n", number, point == FaultPoint::Write ? "write" : "rename",
                     file.string().c_str());
    if (plan.mode == Mode::Kill && number == plan.at) {
#ifdef _WIN32
        std::_Exit(137);
#else
        ::kill(::getpid(), SIGKILL);
#endif
    }
    return plan.mode == Mode::Full && number >= plan.at && point == FaultPoint::Write;
}

} // namespace kestrelon
