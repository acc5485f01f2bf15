#pragma once
// "Body Information": every body of the body settings file with its limits,
// and the current volume of the selected body, set with the slider or typed
// and applied. The dialog works on the body records themselves: a volume
// changes at once, "OK" confirms every body's volume and "Cancel" (or closing
// the window) puts every body back to its confirmed volume. The file is
// written only at program exit, by the frame.
//
// "Get Version" asks a connected board for its versions through the board
// plug-in; until that plug-in is hosted the button stays disabled, so nothing
// is ever called through a missing function.
#include "bodies/body_info.h"

#include "host/board_player_host.h"

#include <QDialog>

#include <functional>

#include <cstdint>
#include <vector>

class QGroupBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QSlider;
class QTreeWidget;
class QTreeWidgetItem;

namespace kestrelon {

class UserPort;

class BodyInformationDialog : public QDialog {
    Q_OBJECT
public:
    // Item values of the tree: a body item carries its index in the lower 24 bits.
    static constexpr std::uint32_t kBodyItem = 0x1000000;
    static constexpr std::uint32_t kValueItem = 0x2000000;
    static constexpr std::uint32_t kCurrentVolumeItem = 0x8000000;
    static constexpr std::uint32_t kIndexMask = 0x0FFFFFF;

    BodyInformationDialog(std::vector<BodyInfo>& bodies, UserPort& port, QWidget* parent = nullptr);

    // The index of the selected body, -1 when none.
    int selectedBody() const { return m_body; }
    // Selects the body at `index` as a click on its item would.
    void selectBody(int index);

    QTreeWidget* tree() const { return m_tree; }
    QLineEdit* volumeEdit() const { return m_volumeEdit; }
    QPushButton* applyButton() const { return m_apply; }
    QSlider* volumeSlider() const { return m_slider; }
    QLabel* statusLine() const { return m_status; }
    QPushButton* versionButton() const { return m_version; }

    // What "Get Version" asks: the board player's version query. Without one
    // (no board player) the button stays disabled.
    void setVersionQuery(std::function<BoardVersionQuery()> query);
    // What "Get Version" does.
    void getVersion();
    // The device of board port 0: shown with the serial devices found to
    // choose from; `chosen` hears each choice.
    void setBoardPort(const QString& device, const QStringList& devices, std::function<void(const QString&)> chosen);
    QComboBox* boardPortBox() const { return m_port0; }

    // Names the body settings file the volumes are kept in: an installed
    // program keeps them in the user's copy, and the user should know which.
    void setSettingsFile(const QString& path);
    QLabel* settingsFileLine() const { return m_file; }

    // What "Apply" does.
    void applyTypedVolume();

    void accept() override;
    void reject() override;

    // The number "Apply" reads from the edit: leading blanks, an optional sign
    // and the digits that follow; anything else gives 0.
    static int leadingInteger(const QString& text);

private:
    void fillTree();
    void onCurrentItemChanged(QTreeWidgetItem* current);
    void setUpVolumeControls();
    void onSliderValueChanged(int value);
    void showCurrentVolume(int volume);
    QTreeWidgetItem* bodyItem(int index) const;
    BodyInfo* selectedRecord();

    std::vector<BodyInfo>& m_bodies;
    UserPort& m_port;
    int m_body = -1;
    bool m_settingUp = false; // the slider moves because a body was selected, not by hand

    QTreeWidget* m_tree;
    QLabel* m_file;
    QGroupBox* m_volumeGroup;
    QLabel* m_volumeLabel;
    QLineEdit* m_volumeEdit;
    QPushButton* m_apply;
    QSlider* m_slider;
    QLabel* m_status;
    QPushButton* m_version;
    std::function<BoardVersionQuery()> m_versionQuery;
    QComboBox* m_port0;
};

} // namespace kestrelon
