#pragma once
// The hidden "Show Splitter Bar" dialog: the split waveform frame can be
// switched on only after the access code has been entered. The switch lives
// for the run of the program and is never stored.
#include <QDialog>

#include <string_view>

class QCheckBox;
class QLineEdit;
class QPushButton;

namespace kestrelon {

class UserPort;

inline constexpr std::string_view kSplitterAccessCode = "tamberlin";

// The process-wide split-view switch; false at start.
bool splitViewEnabled();
void setSplitViewEnabled(bool enabled);

class SplitterBarDialog : public QDialog {
    Q_OBJECT
public:
    // `current` is the switch as it stands; the "Show" box shows it, disabled.
    SplitterBarDialog(bool current, UserPort& port, QWidget* parent = nullptr);

    // The state of the "Show" box, which OK stores into the switch.
    bool showChecked() const;

    QLineEdit* codeEdit() const { return m_code; }
    QPushButton* enterButton() const { return m_enter; }
    QCheckBox* showBox() const { return m_show; }

private:
    void enter();

    UserPort& m_port;
    QLineEdit* m_code;
    QPushButton* m_enter;
    QCheckBox* m_show;
};

} // namespace kestrelon
