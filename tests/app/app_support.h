#pragma once
// Shared by the workbench's tests: one offscreen QApplication for the whole
// test program, a file chooser answering from a script, and a way to act on a
// modal dialog once its exec() has shown it.
#include "app/file_chooser.h"
#include "app/main_window.h"
#include "support/scripted_port.h"
#include "support/temp_dir.h"

#include <QApplication>
#include <QTimer>
#include <QWidget>

#include <gtest/gtest.h>

#include <deque>
#include <functional>

namespace kestrelon::test {

class QtEnvironment : public ::testing::Environment {
public:
    void SetUp() override
    {
        if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
            qputenv("QT_QPA_PLATFORM", "offscreen");
        static int argc = 1;
        static char name[] = "tests_app";
        static char* argv[] = {name, nullptr};
        if (!QApplication::instance())
            m_app = new QApplication(argc, argv);
    }
    void TearDown() override
    {
        delete m_app;
        m_app = nullptr;
    }

private:
    QApplication* m_app = nullptr;
};

// A chooser that hands out what the test queued; an empty queue is a cancel.
class ScriptedChooser : public FileChooser {
public:
    std::deque<std::filesystem::path> projects;
    std::deque<std::vector<std::filesystem::path>> waves;
    std::deque<std::filesystem::path> folders;

    std::optional<std::filesystem::path> projectToOpen(const std::filesystem::path&) override { return next(projects); }
    std::optional<std::filesystem::path> projectToSave(const std::filesystem::path&) override { return next(projects); }
    std::vector<std::filesystem::path> waveFiles(const std::filesystem::path&) override
    {
        return next(waves).value_or(std::vector<std::filesystem::path>{});
    }
    std::optional<std::filesystem::path> folder(const std::filesystem::path&) override { return next(folders); }

private:
    template <typename T>
    std::optional<T> next(std::deque<T>& queue)
    {
        if (queue.empty())
            return std::nullopt;
        T out = queue.front();
        queue.pop_front();
        return out;
    }
};

// Runs `act` on the modal dialog of type D once it is shown (by an exec()
// that the caller starts next). When no such dialog comes up within a few
// seconds the test fails and whatever modal window is up is closed, so a test
// never hangs.
template <typename D>
void whenModal(std::function<void(D*)> act, int triesLeft = 200)
{
    QTimer::singleShot(10, [act, triesLeft] {
        if (auto* dialog = qobject_cast<D*>(QApplication::activeModalWidget())) {
            act(dialog);
            return;
        }
        if (triesLeft > 0) {
            whenModal<D>(act, triesLeft - 1);
            return;
        }
        ADD_FAILURE() << "the expected dialog did not open";
        if (QWidget* other = QApplication::activeModalWidget())
            other->close();
    });
}

// A main window on a scripted port and chooser, in a fresh folder.
class FrameFixture : public ::testing::Test {
protected:
    FrameFixture()
    {
        FrameOptions options;
        options.programFolder = m_dir / "program";
        options.configFolder = m_dir / "config";
        options.port = &m_port;
        options.chooser = &m_chooser;
        std::filesystem::create_directories(options.programFolder);
        m_frame = std::make_unique<MainWindow>(options);
    }

    TempDir m_dir;
    ScriptedPort m_port;
    ScriptedChooser m_chooser;
    std::unique_ptr<MainWindow> m_frame;
};

} // namespace kestrelon::test
