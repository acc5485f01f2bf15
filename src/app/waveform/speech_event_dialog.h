#pragma once
// The "Speech Event " dialog of a source wave's window: modeless, on its own
// copy of the events; "Ok" writes the event file and the window redraws its
// marks from it, "Cancel" touches nothing. "Add" places an event at the
// view's cursor, selecting a row moves the cursor to that event (zooming in
// around it when "Auto Zoom In" is on).
#include "wave/event_editor.h"

#include <QDialog>
#include <QPointer>

class QButtonGroup;
class QCheckBox;
class QLineEdit;
class QListWidget;
class QPushButton;
class QRadioButton;

namespace kestrelon {

class UserPort;
class WavePane;

class SpeechEventDialog : public QDialog {
    Q_OBJECT
public:
    SpeechEventDialog(const std::filesystem::path& eventFile, WavePane* pane, UserPort& port,
                      QWidget* parent = nullptr);

    const SpeechEventEditor& editor() const { return m_editor; }
    QListWidget* list() const { return m_list; }
    QLineEdit* idField() const { return m_id; }
    QLineEdit* descriptionField() const { return m_description; }
    QLineEdit* labelField() const { return m_label; }
    QRadioButton* defaultLabelButton() const { return m_defaultLabel; }
    QRadioButton* customLabelButton() const { return m_customLabel; }
    QCheckBox* autoZoomBox() const { return m_autoZoom; }

    void add();
    void deleteSelected();
    // "Ok": writes the file; the window reloads its marks on `confirmed`.
    void confirm();

signals:
    void confirmed();

private:
    void fillList();
    void showEvent(int row);
    void suggestId();

    SpeechEventEditor m_editor;
    QPointer<WavePane> m_pane;
    UserPort& m_port;
    QListWidget* m_list;
    QLineEdit* m_label;
    QRadioButton* m_defaultLabel;
    QRadioButton* m_customLabel;
    QLineEdit* m_description;
    QLineEdit* m_id;
    QCheckBox* m_autoZoom;
};

} // namespace kestrelon
