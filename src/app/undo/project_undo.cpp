#include "app/undo/project_undo.h"

#include "common/messages.h"
#include "common/paths.h"
#include "common/user_port.h"
#include "project/project_session.h"

#include <QUndoCommand>

namespace kestrelon {

// One edit: the project before and after it. Consecutive steps share the
// state between them, so a history of n steps holds n + 1 texts.
class StateStep : public QUndoCommand {
public:
    StateStep(const QString& text, ProjectUndo::SharedState before, ProjectUndo::SharedState after, ProjectUndo& owner)
        : QUndoCommand(text)
        , m_before(std::move(before))
        , m_after(std::move(after))
        , m_owner(owner)
    {}

    void undo() override { m_owner.apply(*m_before); }
    // The stack redoes a step as it is pushed; the edit itself did that work.
    void redo() override
    {
        if (m_pushed)
            m_owner.apply(*m_after);
        m_pushed = true;
    }

    const ProjectUndo::SharedState& before() const { return m_before; }
    const ProjectUndo::SharedState& after() const { return m_after; }

private:
    ProjectUndo::SharedState m_before;
    ProjectUndo::SharedState m_after;
    ProjectUndo& m_owner;
    bool m_pushed = false;
};

ProjectUndo::ProjectUndo(ProjectSession& session, UserPort& port, QObject* parent)
    : QObject(parent)
    , m_session(session)
    , m_port(port)
{
    m_stack.setUndoLimit(kStepLimit);
    connect(&m_stack, &QUndoStack::indexChanged, this, &ProjectUndo::historyChanged);
    connect(&m_stack, &QUndoStack::cleanChanged, this, &ProjectUndo::historyChanged);
}

void ProjectUndo::record(const QString& text, const std::function<void()>& edit)
{
    if (!m_session.isOpen()) {
        edit();
        return;
    }
    const StateStep* top = lastDone();
    auto before = std::make_shared<const ProjectState>(m_session.state());
    // Where the last step left off, its state serves both steps.
    if (top && *top->after() == *before)
        before = top->after();
    else
        m_stack.clear(); // changed outside the history: its steps no longer lead here
    edit();
    if (!m_session.isOpen())
        return;
    auto after = std::make_shared<const ProjectState>(m_session.state());
    if (*after == *before)
        return; // declined, refused or nothing to do
    m_stack.push(new StateStep(text, std::move(before), std::move(after), *this));
}

void ProjectUndo::forget()
{
    m_stack.clear();
}

void ProjectUndo::forgetIfChanged()
{
    const StateStep* top = lastDone();
    if (!top || !m_session.isOpen() || m_session.state() != *top->after())
        forget();
}

const StateStep* ProjectUndo::lastDone() const
{
    return m_stack.index() > 0 ? static_cast<const StateStep*>(m_stack.command(m_stack.index() - 1)) : nullptr;
}

bool ProjectUndo::stillAt(const ProjectState& expected)
{
    if (m_session.isOpen() && m_session.state() == expected)
        return true;
    m_port.showMessage(msg::kUndoProjectChanged);
    forget();
    return false;
}

void ProjectUndo::undo()
{
    if (!m_stack.canUndo())
        return;
    if (stillAt(*lastDone()->after()))
        m_stack.undo();
}

void ProjectUndo::redo()
{
    if (!m_stack.canRedo())
        return;
    const auto* step = static_cast<const StateStep*>(m_stack.command(m_stack.index()));
    if (stillAt(*step->before()))
        m_stack.redo();
}

void ProjectUndo::apply(const ProjectState& state)
{
    emit aboutToRestore();
    const std::vector<std::filesystem::path> unmoved = m_session.restore(state);
    emit restored();
    if (!unmoved.empty()) {
        std::string text(msg::kUndoFilesNotMoved);
        for (const std::filesystem::path& file : unmoved)
            text.append("\n").append(utf8FromPath(file));
        m_port.showMessage(text);
    }
}

} // namespace kestrelon
