#pragma once
// "Show configuration": what a codec plug-in says of itself (version, the
// format it works at, the sample rates it accepts, the bit rates it offers,
// its description), asked from the library in the project's Algos folder.
#include <QDialog>

namespace kestrelon {

struct AlgorithmInfo;

class AlgorithmInfoDialog : public QDialog {
    Q_OBJECT
public:
    explicit AlgorithmInfoDialog(const AlgorithmInfo& info, QWidget* parent = nullptr);
};

} // namespace kestrelon
