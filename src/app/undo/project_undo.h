#pragma once
// Undo and Redo of the project's edits: the Files tree's (Add Folder, Add
// Files, the deletes, a folder's new name) and the list's (Delete, Delete All,
// Clear, Property). A step keeps the project as it was before and after its
// edit; commands whose work on files no undo could take back (encode, decode,
// Add Encode Data, Duplicate, Save) empty the history instead.
//
// The steps live in a QUndoStack, so the menu texts ("&Undo Delete Files")
// and the clean state come from Qt's own conventions.
#include "project/project_state.h"

#include <QObject>
#include <QString>
#include <QUndoStack>

#include <functional>
#include <memory>

namespace kestrelon {

class ProjectSession;
class StateStep;
class UserPort;

class ProjectUndo : public QObject {
    Q_OBJECT
public:
    // Steps kept: each holds the project's text, so a big project's history
    // is bounded by count.
    static constexpr int kStepLimit = 30;

    ProjectUndo(ProjectSession& session, UserPort& port, QObject* parent = nullptr);
    // The stack empties itself as it goes: its owner, half gone, hears nothing of it.
    ~ProjectUndo() override { m_stack.blockSignals(true); }

    // Runs `edit`; when it changed the project, a step named `text` is kept.
    void record(const QString& text, const std::function<void()>& edit);
    // The history goes: the project was changed in a way no step describes.
    void forget();
    // After a command that may have changed the project outside the history
    // (an encode the person may have cancelled): the history goes if it did.
    void forgetIfChanged();

    bool canUndo() const { return m_stack.canUndo(); }
    bool canRedo() const { return m_stack.canRedo(); }
    QString undoText() const { return m_stack.undoText(); }
    QString redoText() const { return m_stack.redoText(); }

    // Each checks first that the project is still as the step left it; if
    // something outside the history changed it, the person is told and the
    // history goes.
    void undo();
    void redo();

signals:
    // Before the project is put back: every pointer into its items goes stale.
    void aboutToRestore();
    // After: the views fill again from the project.
    void restored();
    void historyChanged();

private:
    friend class StateStep;
    using SharedState = std::shared_ptr<const ProjectState>;
    void apply(const ProjectState& state);
    bool stillAt(const ProjectState& expected);
    const StateStep* lastDone() const;

    ProjectSession& m_session;
    UserPort& m_port;
    QUndoStack m_stack;
};

} // namespace kestrelon
