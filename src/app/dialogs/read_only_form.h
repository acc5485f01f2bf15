#pragma once
// A form of captions and plain, selectable texts, as the information dialogs
// show them. Each text is named after its caption, so a check or a test finds
// it with fieldText().
#include <QFormLayout>
#include <QString>

#include <string>

class QLabel;

namespace kestrelon {

class ReadOnlyForm : public QFormLayout {
public:
    ReadOnlyForm();

    QLabel* addField(const QString& caption, const QString& value);
    QLabel* addField(const QString& caption, const std::string& value);
};

// The text of the field or line edit captioned `caption` inside `dialog`.
QString fieldText(const QWidget& dialog, const QString& caption);

} // namespace kestrelon
