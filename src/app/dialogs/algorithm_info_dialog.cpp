#include "app/dialogs/algorithm_info_dialog.h"

#include "app/dialogs/read_only_form.h"
#include "common/paths.h"
#include "host/algorithm_info.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QVBoxLayout>

namespace kestrelon {

AlgorithmInfoDialog::AlgorithmInfoDialog(const AlgorithmInfo& info, QWidget* parent)
    : QDialog(parent)
{
    setWindowTitle(tr("Configuration of %1").arg(QString::fromStdString(info.name)));
    auto* form = new ReadOnlyForm;
    form->addField(tr("Name:"), info.name);
    form->addField(tr("Library:"), utf8FromPath(info.libraryPath));
    form->addField(tr("Version:"), info.versionText);
    form->addField(tr("Sample Rate:"), info.sampleRateText);
    form->addField(tr("Accepted Sample Rates:"), info.sampleRatesText + " Hz");
    form->addField(tr("Resolution:"), info.resolutionText);
    form->addField(tr("Channels:"), info.channelsText);
    form->addField(tr("Bit Rates:"), info.bitRatesText + " bps");
    form->addField(tr("Description:"), info.description)->setWordWrap(true);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

} // namespace kestrelon
