#pragma once
// "Compare Bit Rates": the chosen sources swept at every bit rate a body
// offers, by kestrelon-cli in worker processes while the project stays open
// here, drawn as size against quality per algorithm and listed beside; the
// chosen point is added to the project as a row of each source.
#include "bodies/body_info.h"
#include "codec/rate_comparison.h"

#include <QDialog>

#include <filesystem>
#include <functional>
#include <vector>

class QCheckBox;
class QComboBox;
class QLabel;
class QProcess;
class QProgressBar;
class QPushButton;
class QTableWidget;

namespace kestrelon {

class RateChart;
class UserPort;

class CompareRatesDialog : public QDialog {
    Q_OBJECT
public:
    struct Setup {
        std::vector<BodyInfo> bodies;
        std::string body; // chosen at first
        std::vector<std::filesystem::path> waves; // the sources to compare
        std::filesystem::path cli; // the program that sweeps
        std::filesystem::path bodySettingsFile; // what it reads the bodies from; empty: its own choice
    };
    // What "Add as Row" does with the chosen setting.
    using AddRow = std::function<void(const std::string& body, const std::string& algorithm, const std::string& rate)>;

    CompareRatesDialog(Setup setup, AddRow addRow, UserPort& port, QWidget* parent = nullptr);
    ~CompareRatesDialog() override;

    // What "Compare" does: starts the sweep of the checked algorithms.
    void compare();
    bool running() const;
    void stop();
    // What "Add as Row" does.
    void addChosen();

    QComboBox* bodyBox() const { return m_body; }
    QCheckBox* algorithmBox(const QString& name) const;
    RateChart* chart() const { return m_chart; }
    QTableWidget* table() const { return m_table; }
    QLabel* statusLine() const { return m_status; }
    QPushButton* addButton() const { return m_add; }

private:
    void showAlgorithms();
    void finished();
    void showCurves(std::vector<RateCurve> curves);
    void followChosenPoint();
    void done(const QString& status);

    Setup m_setup;
    AddRow m_addRow;
    UserPort& m_port;
    QComboBox* m_body;
    QWidget* m_algorithms;
    std::vector<QCheckBox*> m_algorithmBoxes;
    QPushButton* m_compare;
    QPushButton* m_stop;
    QLabel* m_status;
    QProgressBar* m_progress;
    QComboBox* m_metric;
    RateChart* m_chart;
    QTableWidget* m_table;
    QPushButton* m_add;
    QProcess* m_process = nullptr;
    std::vector<RateCurve> m_curves;
    bool m_following = false; // the table and the chart follow each other's choice
};

} // namespace kestrelon
