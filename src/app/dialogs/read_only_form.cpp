#include "app/dialogs/read_only_form.h"

#include <QLabel>
#include <QLineEdit>

namespace kestrelon {

ReadOnlyForm::ReadOnlyForm()
{
    setLabelAlignment(Qt::AlignRight | Qt::AlignVCenter);
    setFieldGrowthPolicy(QFormLayout::ExpandingFieldsGrow);
}

QLabel* ReadOnlyForm::addField(const QString& caption, const QString& value)
{
    auto* text = new QLabel(value);
    text->setTextInteractionFlags(Qt::TextSelectableByMouse);
    text->setObjectName(caption);
    text->setMinimumWidth(280);
    addRow(caption, text);
    return text;
}

QLabel* ReadOnlyForm::addField(const QString& caption, const std::string& value)
{
    return addField(caption, QString::fromStdString(value));
}

QString fieldText(const QWidget& dialog, const QString& caption)
{
    if (const auto* text = dialog.findChild<QLabel*>(caption))
        return text->text();
    const auto* edit = dialog.findChild<QLineEdit*>(caption);
    return edit ? edit->text() : QString();
}

} // namespace kestrelon
