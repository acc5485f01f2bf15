#pragma once
// "Encode Setting": the body, the algorithm and the bit rate of a new row.
// The three lists follow each other: a body offers its algorithms, an
// algorithm its bit rates. The dialog opens on the last choice where the
// lists still hold it. "OK" always closes it; a list left without a choice
// makes the answer invalid, which Add Encode Data reports ("There is a
// error!") and adds no row for.
//
// "Configuration" would open the algorithm's own options; the codec plug-ins
// offer none yet, so the button stays disabled.
#include "bodies/body_info.h"
#include "codec/add_encode_data.h"

#include <QDialog>

#include <vector>

class QCheckBox;
class QComboBox;
class QLabel;
class QPushButton;

namespace kestrelon {

class EncodeSettingDialog : public QDialog {
    Q_OBJECT
public:
    EncodeSettingDialog(const std::vector<BodyInfo>& bodies, const LastEncodeSetting& last,
                        const QString& sourceName = {}, QWidget* parent = nullptr);

    // What the person did: valid only after the dialog closed.
    EncodeSettingAnswer answer() const;

    QComboBox* bodyBox() const { return m_body; }
    QComboBox* nameBox() const { return m_name; }
    QComboBox* bitRateBox() const { return m_bitRate; }
    QCheckBox* applyToAllBox() const { return m_applyToAll; }
    QPushButton* configurationButton() const { return m_configuration; }

private:
    void fillAlgorithms(const QString& preferred);
    void fillBitRates(const QString& preferred);
    const BodyInfo* currentBody() const;
    const BodyAlgoInfo* currentAlgorithm() const;

    const std::vector<BodyInfo>& m_bodies;
    QLabel* m_source;
    QComboBox* m_body;
    QComboBox* m_name;
    QComboBox* m_bitRate;
    QPushButton* m_configuration;
    QCheckBox* m_applyToAll;
};

// Add Encode Data's chooser in the workbench: a fresh dialog for each time it
// is asked, so every opening starts from a clean, valid state.
class EncodeSettingDialogChooser : public EncodeSettingChooser {
public:
    EncodeSettingDialogChooser(const std::vector<BodyInfo>& bodies, QWidget* parent)
        : m_bodies(bodies)
        , m_parent(parent)
    {}
    EncodeSettingAnswer choose(const ProjectItem& source, const LastEncodeSetting& last) override;

private:
    const std::vector<BodyInfo>& m_bodies;
    QWidget* m_parent;
};

} // namespace kestrelon
